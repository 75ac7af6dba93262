// Hostile uses of objects, types and members: destructors and methods that destroy their own
// object, types whose newobj returns nothing or another object, functions with unexpected
// arguments. A sanitizer would report a failure of each test.
#include "qrv/containers/cattr.h"
#include "qrv/containers/citerobj.h"
#include "qrv/containers/cmapobj.h"
#include "qrv/core/ceros.h"
#include "qrv/core/cexe.h"
#include "qrv/core/cmodifier.h"
#include "qrv/core/cobjd.h"
#include "qrv/text/write/cwriter.h"
#include "tests/support/fixture.h"
#include "tests/support/objects.h"

#include <functional>
#include <sstream>

namespace {

class Hostile : public QrvTest {};

using test::key;

using test::val;

// Runs an action in its destructor.
class cLastWish : public cObjD<int> {
  public:
    explicit cLastWish(std::function<void()> wish) : wish_(std::move(wish)) {}
    cLastWish(cLastWish const &) = delete;
    cLastWish &operator=(cLastWish const &) = delete;
    ~cLastWish() override { wish_(); }

  private:
    std::function<void()> wish_;
};

// An executable that runs an action in its destructor.
class cDyingMember : public cExeMember {
  public:
    cDyingMember(cProcedure2 f, std::function<void()> wish)
        : cExeMember(f), wish_(std::move(wish)) {}
    cDyingMember(cDyingMember const &) = delete;
    cDyingMember &operator=(cDyingMember const &) = delete;
    ~cDyingMember() override { wish_(); }

  private:
    std::function<void()> wish_;
};

using test::accept;
bool accept_other(cObj &, objref &) { return true; }
bool accept_three(cObj &, objref &, objref &) { return true; }

} // namespace

TEST_F(Hostile, a_member_map_that_outlives_its_object_has_no_father) {
    objref obj = cat::of(1);
    obj->set_omember("k", cat::of(2));
    objref const members = obj->call("ommap");
    hashref const hash = static_cast<cMapObj &>(*members).datamap_ref();
    EXPECT_EQ(hash->father(), obj.get());
    obj = nullptr;
    EXPECT_EQ(hash->father(), nullptr);
    cErrorLog errors;
    EXPECT_FALSE(hash->mapitem("equal", make<cExeMember>(accept_three)));
    EXPECT_EQ(errors.text(),
              "0x50000000 Standard method 'equal'  has bad prototype in object type: \n");
}

TEST_F(Hostile, a_hash_that_outlives_its_map_has_no_father) {
    objref map = make<cMapObj>();
    hashref const hash = static_cast<cMapObj &>(*map).datamap_ref();
    EXPECT_EQ(hash->father(), map.get());
    map = nullptr;
    EXPECT_EQ(hash->father(), nullptr);
    cErrorLog errors;
    EXPECT_FALSE(hash->mapitem("equal", make<cExeMember>(accept_three)));
    EXPECT_EQ(errors.count(), 1u);
}

TEST_F(Hostile, a_member_map_that_was_replaced_has_no_father) {
    objref obj = cat::of(1);
    obj->set_omember("k", cat::of(2));
    hashref const first = obj->ommap_ref();
    obj->ommap(make<cAttrHash>(nullptr));
    EXPECT_EQ(first->father(), nullptr);
    EXPECT_EQ(obj->ommap().father(), obj.get());
    hashref const second = obj->ommap_ref();
    obj->set_omember("k", cat::of(2));
    obj->set_omember("k", nullptr);
    EXPECT_FALSE(obj->has_ommap());
    EXPECT_EQ(second->father(), nullptr);
}

namespace {

int looked = 0;

// Uses itself in many ways in its destructor.
class cSelfish : public cMapObj {
  public:
    cSelfish() = default;
    cSelfish(cSelfish const &) = delete;
    cSelfish &operator=(cSelfish const &) = delete;
    ~cSelfish() override {
        for (cIterObj it = begin(); it.valid(); ++it) ++looked;
        if (is_good(getattr(key("a")))) ++looked;
        if (is_good(call("size"))) ++looked;
        if (equal(*this)) ++looked;
        cAttr((*this)["b"]) = cat::of(2);
    }
};

} // namespace

TEST_F(Hostile, a_destructor_may_share_its_object) {
    looked = 0;
    objref map = make<cSelfish>();
    map->setattr(key("a"), cat::of(1));
    map = nullptr;
    EXPECT_EQ(looked, 4);
}

TEST_F(Hostile, an_old_member_may_destroy_the_object_when_it_is_destroyed) {
    objref obj = cat::of(1);
    obj->set_omember("k", make<cLastWish>([&obj] { obj = nullptr; }));
    cObj *const plain = obj.get();
    EXPECT_TRUE(plain->set_omember("k", cat::of(2)));
    EXPECT_EQ(obj, nullptr);

    obj = cat::of(1);
    obj->set_omember("k", make<cLastWish>([&obj] { obj = nullptr; }));
    EXPECT_TRUE(obj.get()->set_omember("k", nullptr));
    EXPECT_EQ(obj, nullptr);
}

TEST_F(Hostile, a_destroyed_member_may_use_its_successor) {
    objref const obj = cat::of(1);
    objref seen;
    obj->set_omember("k", make<cLastWish>([&] { seen = obj->omember("k"); }));
    EXPECT_TRUE(obj->set_omember("k", cat::of(2)));
    EXPECT_EQ(cat::as_index(seen), 2);
    obj->set_omember("k", make<cLastWish>([&] { obj->set_omember("k", cat::of(4)); }));
    EXPECT_TRUE(obj->set_omember("k", nullptr));
    EXPECT_EQ(cat::as_index(obj->omember("k")), 4);
}

namespace {

objref owned; // the last owner of an object whose method runs

bool drop_owner(cObj &obj, objref &) {
    owned = nullptr;
    val<int>(objref::share(&obj)) = 7;
    return obj.flags_of(of_exe_member) != 0;
}

bool drop_owner_alone(cObj &obj) {
    owned = nullptr;
    return obj.is_good();
}

bool drop_owner_three(cObj &obj, objref &k, objref &) {
    objref kept = k;
    return drop_owner(obj, kept);
}

objref owned_int(char const *name, objref const &exe) {
    owned = cat::of(1);
    owned->set_omember(name, exe);
    return owned;
}

} // namespace

TEST_F(Hostile, own_methods_may_destroy_their_object) {
    objref const two = cat::of(2);
    for (char const *name : {"assign", "add", "write"}) {
        cObj *const plain = owned_int(name, make<cExeMember>(drop_owner)).get();
        std::ostringstream os;
        bool const done = *name == 'w'                    ? plain->write(os)
                          : std::string(name) == "assign" ? plain->assign(*two)
                                                          : plain->add(*two);
        EXPECT_TRUE(done) << name;
        EXPECT_EQ(owned, nullptr);
    }
    EXPECT_TRUE(owned_int("setattr", make<cExeMember>(drop_owner_three)).get()->setattr(two, two));
}

TEST_F(Hostile, a_method_called_by_name_may_destroy_its_object) {
    cObj *plain = owned_int("go", make<cExeMember>(drop_owner)).get();
    EXPECT_TRUE(cObj::is_nil(plain->call("go", cat::of(2))));
    plain = owned_int("go", make<cExeMember>(drop_owner_alone)).get();
    EXPECT_TRUE(cObj::is_nil(plain->call("go")));
    EXPECT_EQ(owned, nullptr);
}

TEST_F(Hostile, a_destroyed_method_may_replace_its_successor) {
    typeref const type = make<cTypeObj>("hostile");
    type->set_tmember("assign", make<cDyingMember>(accept, [&] {
                          type->set_tmember("assign", make<cExeMember>(accept_other));
                      }));
    type->set_tmember("assign", make<cExeMember>(accept));
    auto const &exe = dynamic_cast<cExeMember const &>(*type->tmember("assign"));
    EXPECT_EQ(type->method(mid_assign), exe.function()); // the table agrees with the member
    EXPECT_EQ(exe.function(), reinterpret_cast<cVoidFunction>(accept_other));
}

TEST_F(Hostile, a_destroyed_method_may_destroy_its_type) {
    typeref type = make<cTypeObj>("hostile");
    type->set_tmember("assign", make<cDyingMember>(accept, [&] { type = nullptr; }));
    type.get()->set_tmember("assign", make<cExeMember>(accept_other));
    EXPECT_EQ(type, nullptr);
    type = make<cTypeObj>("hostile");
    type->set_tmember("assign", make<cDyingMember>(accept, [&] { type = nullptr; }));
    type.get()->set_tmember("assign", nullptr);
    EXPECT_EQ(type, nullptr);
}

TEST_F(Hostile, an_overwritten_member_may_change_the_base_while_a_type_inherits) {
    typeref const base = make<cTypeObj>("base");
    for (char const *name : {"a", "b", "c"}) base->set_tmember(name, cat::of(name));
    typeref const type = make<cTypeObj>("hostile");
    type->set_tmember("a", make<cLastWish>([&] {
                          for (char const *name : {"a", "b", "c"}) base->set_tmember(name, nullptr);
                      }));
    type->inherit(*base);
    for (char const *name : {"a", "b", "c"}) EXPECT_EQ(cat::as_string(type->tmember(name)), name);
}

namespace {

// Claims to have the right prototype for every name.
class cLiar : public cExeMember {
  public:
    cLiar() : cExeMember(accept_three) {}
    cLiar(cLiar const &) = delete;
    cLiar &operator=(cLiar const &) = delete;
    ~cLiar() override = default;
    bool validate_exe(cObj *) const override { return true; }
};

bool switch_methods(cObj &obj, objref &) {
    obj.type().set_tmember("assign", nullptr);
    obj.type().set_tmember("assign", make<cExeMember>(accept_other));
    return true;
}

} // namespace

TEST_F(Hostile, a_member_with_a_wrong_prototype_is_not_stored) {
    typeref const type = make<cTypeObj>("hostile");
    cErrorLog errors;
    type->set_tmember("assign", make<cLiar>());
    EXPECT_EQ(errors.text(),
              "0x50000000 Standard method 'assign'  has bad prototype in object type: type\n");
    EXPECT_EQ(type->method(mid_assign), nullptr);
    EXPECT_EQ(type->tmember("assign"), cat::badfind());
}

TEST_F(Hostile, a_method_may_replace_itself_in_the_type_while_it_runs) {
    typeref const type = make<cTypeObj>("hostile");
    type->set_tmember("assign", make<cExeMember>(switch_methods));
    objref const obj = make<cObj>(true);
    obj->set_type(type);
    EXPECT_TRUE(obj->assign(*cat::of(1)));
    EXPECT_EQ(type->method(mid_assign), reinterpret_cast<cVoidFunction>(accept_other));
    obj->set_type(&cat::type_nil());
}

namespace {

bool never_equal(objref const &, objref const &) { return false; }
unsigned int all_alike(objref const &) { return 1; }

} // namespace

TEST_F(Hostile, a_key_that_is_not_found_again_returns_the_scratch_member) {
    typeref const type = make<cTypeObj>("hostile");
    type->set_hash(all_alike, never_equal);
    objref const lost = make<cObj>(true);
    lost->set_type(type);
    objref const obj = cat::of(1);
    objref &member = obj->gmember_(lost);
    EXPECT_EQ(member, nullptr);
    EXPECT_EQ(obj->ommap().used(), 1u);
    obj->set_omember("x", nullptr);
    obj->ommap(hashref());
    lost->set_type(&cat::type_nil());
}

namespace {

objref make_null(objref) { return nullptr; }
objref make_nil(objref) { return cat::nil(); }
objref make_text(objref) { return cat::of("text"); }
objref make_itself(objref type) { return type; }
objref make_true(objref) { return cat::btrue(); }
objref throw_error(objref) { throw cErr(7, "newobj"); }

} // namespace

TEST_F(Hostile, types_whose_newobj_returns_nothing_or_another_object) {
    for (cFunction1 f : {make_null, make_nil, make_text, make_itself, make_true, throw_error}) {
        cErrorLog errors;
        typeref const type = make<cTypeObj>("hostile");
        type->set_tmember("newobj", make<cExeMember>(f));
        objref const obj = make<cObj>(true);
        obj->set_type(type);
        objref const map = make<cMapObj>();
        EXPECT_EQ(obj->clone(false), cat::bad());
        EXPECT_FALSE(cat::detach(objref(obj), false));
        if (f != throw_error) {
            EXPECT_EQ(map->force_omember("k", *type), cat::bad());
            EXPECT_EQ((*map)["k"].force_type(*type), cat::bad());
            cTypeInsert const known(*type);
            objref const made = cat::call("new", cat::of("hostile"));
            if (f == make_text)
                EXPECT_EQ(cat::as_string(made), "text");
            else
                EXPECT_EQ(made.get(), f(type).get());
        } else {
            EXPECT_THROW(map->force_omember("k", *type), cErr);
            EXPECT_THROW((*map)["k"].force_type(*type), cErr);
            EXPECT_FALSE(map->has_ommap());
        }
        obj->set_type(&cat::type_nil());
    }
}

TEST_F(Hostile, an_entry_that_only_claims_to_be_a_type_is_not_one) {
    objref const obj = cat::of(1);
    obj->setflags(of_type);
    cat::typemap().datamap().mapitem("mock", obj);
    EXPECT_EQ(cat::call("new", cat::of("mock")), cat::bad());
    EXPECT_EQ(&cat::find_type("mock"), &cat::type_nil());
    objref const map = make<cMapObj>();
    EXPECT_EQ(map->call("set_entrytype", obj), cat::bad());
    cat::typemap().datamap().delitem("mock");
}

namespace {

objref kept;

bool keep_source(cObj &, objref &source) {
    kept = source;
    return true;
}

} // namespace

TEST_F(Hostile, an_own_assign_may_keep_its_argument) {
    cObjD<int> number(1);
    number.set_omember("assign", make<cExeMember>(keep_source));
    number = 5;
    ASSERT_NE(kept, nullptr);
    EXPECT_EQ(cat::as_index(kept), 5);
    EXPECT_TRUE(kept->flags_of(of_const));
    kept = nullptr;
}

TEST_F(Hostile, a_type_s_assign_may_keep_its_argument) {
    cTypeModifier const changed(cat::type_int(), "assign", make<cExeMember>(keep_source));
    cObjD<int> number(1);
    number = 5;
    ASSERT_NE(kept, nullptr);
    EXPECT_EQ(cat::as_index(kept), 5);
    kept = nullptr;
}

TEST_F(Hostile, an_untyped_object_is_void) {
    objref const raw = make<cObj>(false);
    EXPECT_TRUE(raw->is_void());
    EXPECT_FALSE(raw->is_bad());
    raw->create();
    objref const number = cat::of(5);
    EXPECT_TRUE(number->assign(*raw));
    EXPECT_TRUE(number->add(*raw));
    EXPECT_FALSE(raw->assign(*number));
    EXPECT_FALSE(raw->add(*number));
    EXPECT_FALSE(raw->setattr(key("k"), number));
    EXPECT_EQ(raw->getattr(key("k")), cat::badfind());
    EXPECT_FALSE(number->equal(*raw));
    EXPECT_FALSE(number->convert(raw));
    EXPECT_EQ(raw->typeflags_of(tf_exe), 0);
    EXPECT_FALSE(raw->is_exe());
    EXPECT_FALSE(raw->is_container());
    EXPECT_TRUE(number->set_omember("k", raw));
    EXPECT_EQ(number->omember("k"), raw);
    EXPECT_EQ(cat::type_of_key(raw), cat::bad());
    EXPECT_EQ(cAttr(raw, 1).getattr(), cat::bad());
    EXPECT_FALSE(cObj::is_map(raw));
}

TEST_F(Hostile, a_handler_that_throws_leaves_no_empty_member_map) {
    cat::errhandler().throw_mask(0xC0000000);
    objref const obj = cat::of(1);
    EXPECT_THROW(obj->set_omember("k", make<cExeGlobal>(accept)), cErr);
    EXPECT_FALSE(obj->has_ommap());
    EXPECT_THROW(obj->set_omember("equal", make<cExeMember>(accept_three)), cErr);
    EXPECT_FALSE(obj->has_ommap());
    EXPECT_FALSE(obj->flags_of(of_exe_member));
}

TEST_F(Hostile, standard_methods_can_be_called_by_name_with_any_argument) {
    objref const values[] = {cat::of(1),
                             cat::of("a"),
                             cat::of(true),
                             cat::of(1.5f),
                             cat::of(2.5),
                             make<cIterObj>(),
                             make<cMapObj>(),
                             cat::nil(),
                             cat::bad(),
                             objref(),
                             objref::share(&cat::type_int())};
    for (objref const &value : values) {
        if (!value) continue;
        for (char const *name : {"assign", "add", "equal", "less", "write", "read"})
            for (objref const &argument : values) {
                cErrorLog errors;
                objref const copy = value->clone(false);
                objref const target = cObj::is_good(copy) ? copy : value;
                (void)target->call(name, argument);
            }
        cErrorLog errors;
        for (char const *name : {"size", "create", "iterobj", "newref", "newobj", "type", "ommap"})
            (void)value->call(name);
    }
    cErrorLog errors;
    objref const number = cat::of(1);
    EXPECT_EQ(number->call("equal", cat::of("1")), cat::bad());
    EXPECT_EQ(number->call("equal", objref()), cat::bad());
    EXPECT_EQ(number->call("less", cat::of(2.5)), cat::bad());
    EXPECT_EQ(number->call("less", objref()), cat::bad());
    EXPECT_EQ(number->call("less", cat::of(2)), cat::nil());
    EXPECT_EQ(errors.count(), 0u);
}

namespace {

bool throw_in_converter(cObj &, objref &) { throw cErr(9, "converter"); }
bool fail_in_converter(cObj &, objref &) { return false; }

} // namespace

TEST_F(Hostile, converters_that_fail_or_throw_leave_the_value) {
    typeref const type = make<cTypeObj>("hostile");
    objref const source = make<cObj>(true);
    source->set_type(type);
    objref const number = cat::of(5);
    cat::type_int().set_converter(*type, throw_in_converter);
    EXPECT_THROW(number->assign(*source), cErr);
    EXPECT_THROW(number->add(*source), cErr);
    cat::type_int().set_converter(*type, fail_in_converter);
    cErrorLog errors;
    EXPECT_FALSE(number->assign(*source));
    EXPECT_FALSE(number->add(*source));
    EXPECT_EQ(errors.text(),
              "0x41800000 Method 'assign', type 'int', without converter from type: hostile\n"
              "0x41800000 Method 'add', type 'int', without converter from type: hostile\n");
    EXPECT_EQ(val<int>(number), 5);
    cat::type_int().set_converter(*type, nullptr);
    source->set_type(&cat::type_nil());
}

TEST_F(Hostile, a_write_method_may_keep_its_stream) {
    objref const obj = cat::of(1);
    obj->set_omember("write", make<cExeMember>(keep_source));
    {
        std::ostringstream os;
        EXPECT_TRUE(obj->write(os));
    }
    ASSERT_NE(kept, nullptr);
    EXPECT_EQ(dynamic_cast<cOutHolder const &>(*kept).valptr(), nullptr);
    EXPECT_EQ(cat::of(1)->call("write", kept), cat::bad());
    EXPECT_EQ(make<cMapObj>()->call("write", kept), cat::bad());
    kept = nullptr;

    cTypeModifier const changed(cat::type_int(), "read", make<cExeMember>(keep_source));
    {
        std::istringstream is("1");
        EXPECT_TRUE(cat::of(1)->read(is));
    }
    ASSERT_NE(kept, nullptr);
    EXPECT_EQ(cat::of("a")->call("read", kept), cat::bad());
    kept = nullptr;
}

TEST_F(Hostile, a_null_metatype_is_the_ordinary_one) {
    typeref const type = make<cTypeObj>(static_cast<cTypeObj *>(nullptr), "hostile",
                                        static_cast<cTypeObj::setup_function>(nullptr));
    EXPECT_EQ(type->type(), cat::typetype());
    EXPECT_EQ(type->name(), "hostile");
    EXPECT_NE(type->method(mid_equal), nullptr);
}

TEST_F(Hostile, the_methods_of_an_iterator_can_be_called_by_name_with_any_argument) {
    objref const it = make<cIterObj>();
    cErrorLog errors;
    EXPECT_EQ(it->call("equal", make<cMapObj>()), cat::bad());
    EXPECT_EQ(it->call("equal", objref()), cat::bad());
    EXPECT_EQ(it->call("equal", make<cIterObj>()), cat::nil());
    EXPECT_EQ(it->call("assign", objref()), cat::bad());
    EXPECT_EQ(it->call("getattr", objref()), cat::bad());
    EXPECT_EQ(it->call("setattr", objref(), objref()), cat::bad());
    EXPECT_EQ(errors.count(), 0u);
}

// Objects: states, dispatch, operators, ids, keys.
#include "qrv/core/cobj.h"

#include "qrv/containers/cattr.h"
#include "qrv/containers/cmapobj.h"
#include "qrv/containers/csetobj.h"
#include "qrv/containers/cvectorobj.h"
#include "qrv/core/ceros.h"
#include "qrv/core/cexe.h"
#include "qrv/core/cobjd.h"
#include "qrv/text/write/cwriter.h"
#include "tests/support/fixture.h"
#include "tests/support/objects.h"

#include <iomanip>
#include <sstream>
#include <utility>

namespace {

class ObjectEdge : public QrvTest {};
class Object : public QrvTest {};

// Lowers the code of every error, as a forgiving handler does.
class cForgiver {
  public:
    cForgiver() : slot_(this, &cForgiver::forgive) { cat::sig_error().connect(slot_); }
    cForgiver(cForgiver const &) = delete;
    cForgiver &operator=(cForgiver const &) = delete;
    ~cForgiver() = default;

  private:
    void forgive(cErr &error) { error.set_code(error.code() & 0x3FFFFFFFu); }
    cSlot1<cForgiver, cErr &> slot_;
};

using test::val;

} // namespace

TEST_F(ObjectEdge, assigning_void_is_a_successful_no_op_and_to_void_fails) {
    objref const number = cat::of(5);
    EXPECT_TRUE(number->assign(*cat::nil()));
    EXPECT_TRUE(number->assign(objref()));
    EXPECT_EQ(val<int>(number), 5);
    EXPECT_FALSE(cat::nil()->assign(*number));
}

TEST_F(ObjectEdge, a_temporary_key_is_const) {
    std::string const text = "k";
    objref const key = make_key(text);
    cErrorLog errors;
    EXPECT_TRUE(key->flags_of(of_const));
    EXPECT_FALSE(key->assign(*cat::of("other")));
    EXPECT_EQ(errors.text(),
              "0x41400000 Object is const. Method 'assign' called from type: string\n");
    EXPECT_EQ(text, "k");
}

TEST_F(ObjectEdge, true_does_not_become_false) {
    cErrorLog errors;
    EXPECT_FALSE(cat::btrue()->assign(*cat::bfalse()));
    EXPECT_EQ(errors.text(),
              "0x41400000 Object is const. Method 'assign' called from type: bool\n");
    EXPECT_TRUE(val<bool>(cat::btrue()));
}

TEST_F(ObjectEdge, an_int_and_a_float_are_unequal_without_conversion) {
    EXPECT_FALSE(cat::of(1)->equal(*cat::of(1.0f)));
    EXPECT_TRUE(cat::of(1)->equal(*cat::of(1)));
    EXPECT_FALSE(cat::of(1)->equal(objref()));
}

TEST_F(ObjectEdge, less_of_different_types_compares_their_names) {
    EXPECT_TRUE(cat::of(9)->less(*cat::of("a"))); // "int" < "string"
    EXPECT_FALSE(cat::of("a")->less(*cat::of(9)));
}

namespace {

bool say_own(cObj &, objref &holder) {
    static_cast<cOutHolder &>(*holder).val() << "own";
    return true;
}

bool refuse_read(cObj &, objref &) { return false; }

} // namespace

TEST_F(ObjectEdge, write_honours_an_own_method_and_read_ignores_it) {
    objref const number = cat::of(5);
    number->set_omember("write", make<cExeMember>(say_own));
    number->set_omember("read", make<cExeMember>(refuse_read));
    std::ostringstream os;
    EXPECT_TRUE(number->write(os));
    EXPECT_EQ(os.str(), "own");
    std::istringstream is("7");
    EXPECT_TRUE(number->read(is));
    EXPECT_EQ(val<int>(number), 7);
}

TEST_F(ObjectEdge, an_untyped_object_has_a_null_type) {
    cObj const untyped(false);
    EXPECT_EQ(untyped.typeflags_of(-1), 0);
    EXPECT_NE(cat::type_nil().flags(), 0); // so it isn't "niltype" either
    EXPECT_TRUE(untyped.is_void());
    EXPECT_FALSE(untyped.is_map());
    EXPECT_TRUE(untyped.is_good());
}

TEST_F(Object, states_of_every_sentinel_and_of_null) {
    struct cRow {
        objref obj;
        char const *states; // void nil bad kill map set vector good
    };
    cRow const rows[] = {{objref(), "10110000"},
                         {cat::nil(), "11000001"},
                         {cat::bad(), "10100000"},
                         {cat::badfind(), "10110000"},
                         {cat::constmap().datamap().getitem("REQUIRED"), "10000001"},
                         {cat::of(1), "00000001"},
                         {make<cMapObj>(), "00001001"},
                         {make<cSetObj>(), "00000101"},
                         {make<cVectorObj>(), "00000011"}};
    for (cRow const &row : rows) {
        std::string states;
        for (bool state : {cObj::is_void(row.obj), cObj::is_nil(row.obj), cObj::is_bad(row.obj),
                           cObj::is_kill(row.obj), cObj::is_map(row.obj), cObj::is_set(row.obj),
                           cObj::is_vector(row.obj), cObj::is_good(row.obj)})
            states += state ? '1' : '0';
        EXPECT_EQ(states, row.states);
    }
}

TEST_F(Object, members_return_the_same_as_the_static_functions) {
    EXPECT_TRUE(cat::nil()->is_nil() && cat::nil()->is_void() && !cat::nil()->is_bad());
    EXPECT_TRUE(cat::badfind()->is_kill() && cat::badfind()->is_bad());
    EXPECT_TRUE(make<cMapObj>()->is_container());
    EXPECT_TRUE(cat::type_int().is_type());
    EXPECT_TRUE(make<cExeMember>(say_own)->is_exe());
}

TEST_F(Object, ids_grow_and_an_object_leaves_the_census_once) {
    std::uint32_t const count = cObjBase::ob_count();
    objref const a = cat::of(1), b = cat::of(2);
    EXPECT_LT(a->obid(), b->obid());
    EXPECT_EQ(cObjBase::ob_count(), count + 2);
    a->obid(0);
    a->obid(0);
    cObj::obid(nullptr, 0);
    EXPECT_EQ(cObjBase::ob_count(), count + 1);
}

TEST_F(Object, temporary_keys_are_off_the_census) {
    std::uint32_t const count = cObjBase::ob_count();
    std::string const text = "abc";
    int const number = 3;
    objref const keys[] = {make_key(text), make_key(number), own_key(text), own_key(4)};
    EXPECT_EQ(cObjBase::ob_count(), count);
    EXPECT_EQ(&static_cast<cObjDR<std::string> &>(*keys[0]).val(), &text);
    EXPECT_NE(&static_cast<cObjDR<std::string> &>(*keys[2]).val(), &text);
    EXPECT_EQ(val<int>(keys[1]), 3);
    EXPECT_EQ(val<int>(keys[3]), 4);
}

TEST_F(Object, a_forgiven_const_error_lets_the_operation_continue) {
    objref const number = cat::of(5);
    number->setflags(of_const);
    cErrorLog errors;
    cForgiver const forgiver;
    EXPECT_TRUE(number->assign(*cat::of(6)));
    EXPECT_EQ(val<int>(number), 6);
    EXPECT_TRUE(number->add(*cat::of(1)));
    EXPECT_EQ(val<int>(number), 7);
    EXPECT_EQ(errors.count(), 2u);
}

TEST_F(Object, add_on_a_const_object_names_the_source) {
    objref const number = cat::of(5);
    number->setflags(of_const);
    cErrorLog errors;
    EXPECT_FALSE(number->add(*cat::of(1.5)));
    EXPECT_EQ(errors.text(), "0x41400000 Object is const. Method 'add' called from type: double\n");
    EXPECT_EQ(val<int>(number), 5);
}

TEST_F(Object, assign_keeps_flags_type_and_id) {
    objref const a = cat::of(1), b = cat::of(2);
    a->setflags(of_const_keys);
    unsigned int const id = a->obid();
    *a = *b;
    EXPECT_EQ(val<int>(a), 2);
    EXPECT_EQ(a->flags(), of_const_keys);
    EXPECT_EQ(a->obid(), id);
}

TEST_F(Object, operators_call_their_operations) {
    objref const a = cat::of(1), b = cat::of(2);
    EXPECT_TRUE(*a < *b);
    EXPECT_TRUE(*a != *b);
    *a += *b;
    EXPECT_EQ(val<int>(a), 3);
    *a = *b;
    EXPECT_TRUE(*a == *b);
    objref const v = make<cVectorObj>();
    *v << a << b;
    EXPECT_TRUE((*v / 0) == a);
    EXPECT_TRUE((*v / own_key(1)) == b);
    objref const m = make<cMapObj>();
    m->setattr(own_key("k"), a);
    EXPECT_TRUE((*m / "k") == a);
    EXPECT_TRUE((*m / std::string("x")) == cat::badfind());
    EXPECT_TRUE((*m / static_cast<char const *>(nullptr)) == cat::bad());
}

namespace {

template <class K>
concept cDividesBy = requires(cObj &obj, K key) {
    obj / key;
};
template <class K>
concept cIndexedBy = requires(cObj &obj, K key) {
    obj[key];
};
static_assert(cDividesBy<int> && cDividesBy<char const *> && cDividesBy<std::string>);
static_assert(!cDividesBy<bool> && !cDividesBy<double> && !cDividesBy<float>);
static_assert(cIndexedBy<int> && cIndexedBy<char const *> && cIndexedBy<objref>);
static_assert(!cIndexedBy<bool> && !cIndexedBy<double> && !cIndexedBy<float>);

int assigned = 0;
bool own_assign(cObj &, objref &) { return ++assigned, true; }
objref own_getattr(objref, objref key) { return key; }
bool own_setattr(cObj &obj, objref &, objref &value) { return obj.set_omember("set", value); }
objref own_iterobj(objref) { return cat::nil(); }

} // namespace

TEST_F(Object, own_methods_come_before_the_type) {
    objref const number = cat::of(5);
    number->set_omember("assign", make<cExeMember>(own_assign));
    number->set_omember("add", make<cExeMember>(own_assign));
    number->set_omember("getattr", make<cExeMember>(own_getattr));
    number->set_omember("setattr", make<cExeMember>(own_setattr));
    number->set_omember("iterobj", make<cExeMember>(own_iterobj));
    assigned = 0;
    EXPECT_TRUE(number->assign(*cat::of("text")));
    EXPECT_TRUE(number->add(*cat::of("text")));
    EXPECT_EQ(assigned, 2);
    EXPECT_EQ(val<int>(number), 5);
    EXPECT_TRUE(number->setattr(own_key("k"), cat::of(1)));
    EXPECT_TRUE(cat::is_equal(number->omember("set"), 1));
    EXPECT_TRUE(number->iterobj() == cat::nil());
    objref const kept = *number / (std::string("a long key that needs memory of its own") + "!");
    EXPECT_EQ(cat::as_string(kept), "a long key that needs memory of its own!");
}

TEST_F(Object, a_null_own_method_fails_without_calling_the_type) {
    objref const number = cat::of(5);
    number->set_omember("assign", make<cExeMember>(own_assign)); // sets of_exe_member
    for (char const *name : {"assign", "getattr", "setattr", "write", "iterobj"})
        number->ommap().insert(own_key(std::string(name)), objref(), nullptr);
    EXPECT_FALSE(number->assign(*cat::of(6)));
    EXPECT_FALSE(number->setattr(own_key("k"), cat::of(6)));
    EXPECT_TRUE(number->getattr(own_key("k")) == cat::bad());
    EXPECT_TRUE(number->iterobj() == cat::bad());
    std::ostringstream os;
    EXPECT_FALSE(number->write(os));
    EXPECT_EQ(os.str(), "");
    EXPECT_EQ(val<int>(number), 5);
}

namespace {

bool remove_self(cObj &obj, objref &) { return obj.set_omember("assign", objref()); }

} // namespace

TEST_F(Object, an_own_method_may_remove_itself) {
    objref const number = cat::of(5);
    number->set_omember("assign", make<cExeMember>(remove_self));
    EXPECT_TRUE(number->assign(*cat::of(6)));
    EXPECT_EQ(val<int>(number), 5);
    EXPECT_TRUE(number->assign(*cat::of(6)));
    EXPECT_EQ(val<int>(number), 6);
}

TEST_F(Object, void_objects_have_no_attributes) {
    EXPECT_FALSE(cat::nil()->setattr(own_key("k"), cat::of(1)));
    EXPECT_TRUE(cat::nil()->getattr(own_key("k")) == cat::badfind());
    EXPECT_TRUE(cat::nil()->iterobj() == cat::bad());
    cat::nil()->create();
    cObj::create(nullptr);
}

TEST_F(Object, less_without_method_raises_and_is_true) {
    cErrorLog errors;
    EXPECT_TRUE(cat::of(true)->less(*cat::of(false)));
    EXPECT_EQ(errors.text(),
              "0x48000000 Attr value, type 'bool': Missing method 'less' in this type\n");
    cForgiver const forgiver;
    EXPECT_TRUE(cat::of(true)->less(*cat::of(true)));
}

TEST_F(Object, convert_needs_a_converter_and_a_typed_source) {
    objref const number = cat::of(5);
    EXPECT_FALSE(number->convert(objref()));
    objref const untyped = make<cObj>(false);
    EXPECT_FALSE(number->convert(untyped));
    EXPECT_FALSE(number->convert(cat::of("7")));
    EXPECT_TRUE(number->convert(cat::of(7.9)));
    EXPECT_EQ(val<int>(number), 7);
}

TEST_F(Object, clone_is_private_without_flags_and_members) {
    objref const text = cat::of("abc");
    text->set_comment("// c", true);
    text->setflags(of_const);
    objref const copy = text->clone();
    EXPECT_TRUE(copy != text && copy->equal(*text));
    EXPECT_FALSE(copy->has_ommap());
    EXPECT_EQ(copy->flags(), 0);
}

namespace {

bool throwing_assign(cObj &, objref &) { throw 5; }
objref throwing_new(objref) { throw 5; }

} // namespace

TEST_F(Object, an_exception_while_cloning_results_in_bad_or_is_passed_on) {
    cTypeObj type("thrower");
    type.set_tmember("newobj", make<cExeMember>(throwing_new));
    cMapObj const obj(&type, true);
    EXPECT_TRUE(obj.clone(false) == cat::bad());
    EXPECT_THROW((void)obj.clone(true), int);
}

TEST_F(Object, a_clone_whose_assign_fails_is_bad) {
    cTypeObj type("empty");
    cMapObj const obj(&type, true);
    cErrorLog errors;
    EXPECT_TRUE(obj.clone(true) == cat::bad());
    EXPECT_EQ(errors.text(), "0x48000000 Call of missed standard method 'newobj' in type: empty\n");
}

TEST_F(Object, a_throwing_assign_leaves_the_source_alone) {
    objref const number = cat::of(5);
    number->set_omember("assign", make<cExeMember>(throwing_assign));
    unsigned int const refs = number->refs();
    EXPECT_THROW(number->assign(*cat::of(6)), int);
    EXPECT_EQ(number->refs(), refs);
}

TEST_F(Object, the_census_report_is_decimal_on_any_stream) {
    auto const report = [](std::ios_base &(*base)(std::ios_base &)) {
        std::ostringstream os;
        os << base << std::showbase << std::showpos << std::setw(40) << std::setfill('*');
        cObjBase::put_count(os);
        return os.str();
    };
    std::ostringstream plain;
    cObjBase::put_count(plain);
    EXPECT_EQ(report(std::hex), plain.str());
    EXPECT_EQ(report(std::oct), plain.str());
    EXPECT_EQ(report(std::dec), plain.str());
}

TEST_F(Object, the_census_report_leaves_the_number_base_of_the_stream) {
    std::ostringstream os;
    os << std::hex;
    cObjBase::put_count(os);
    EXPECT_EQ(os.flags() & std::ios_base::basefield, std::ios_base::hex);
}

namespace {

unsigned int counts_seen = 0;
bool see_counts(cObj &, objref &other) {
    counts_seen = other->refs();
    return true;
}

} // namespace

TEST_F(Object, an_argument_is_held_by_one_count_during_the_call) {
    cTypeObj type("counts_seen", nullptr);
    for (char const *name : {"assign", "add", "equal", "less"})
        type.set_tmember(name, make<cExeMember>(see_counts));
    objref const target = make<cObj>(true);
    target->set_type(&type);
    cObj source(true); // counts one owner
    source.set_type(&type);
    objref const shared = objref::share(&source);
    auto const seen = [](bool done) { return done ? std::exchange(counts_seen, 0) : 0; };
    EXPECT_EQ(seen(target->assign(source)), 3u);
    EXPECT_EQ(seen(target->assign(shared)), 3u);
    EXPECT_EQ(seen(target->add(source)), 3u);
    EXPECT_EQ(seen(target->add(shared)), 3u);
    EXPECT_EQ(seen(target->equal(source)), 3u);
    EXPECT_EQ(seen(target->equal(shared)), 3u);
    EXPECT_EQ(seen(target->less(source)), 3u);
    EXPECT_EQ(shared->refs(), 2u);
}

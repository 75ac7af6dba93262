// Type objects: construction, method table, converters, key hooks, members, inheritance.
#include "qrv/core/ctypeobj.h"

#include "qrv/containers/cmapobj.h"
#include "qrv/core/ceros.h"
#include "qrv/core/cexe.h"
#include "qrv/core/cobjd.h"
#include "qrv/text/write/cwriter.h"
#include "tests/support/fixture.h"
#include "tests/support/objects.h"

#include <limits>

namespace {

class TypeEdge : public QrvTest {};
class Type : public QrvTest {};
class TypeMemberEdge : public QrvTest {};
class TypeMember : public QrvTest {};

using test::key;

bool convert_a(cObj &, objref &) { return true; }
bool convert_b(cObj &, objref &) { return false; }

using test::no_args;
objref one_arg(objref) { return cat::nil(); }
objref two_args(objref, objref) { return cat::nil(); }
objref three_args(objref, objref, objref) { return cat::nil(); }
using test::procedure_1;
bool procedure_2(cObj &, objref &) { return true; }
bool procedure_3(cObj &, objref &, objref &) { return true; }

} // namespace

TEST_F(TypeEdge, name_of_an_id_outside_the_table_is_empty) {
    EXPECT_EQ(cTypeObj::name_of(mid_count), "UNKNOWN METHOD");
    EXPECT_EQ(cTypeObj::name_of(-1), "UNKNOWN METHOD");
    method_id id = mid_count;
    EXPECT_FALSE(cTypeObj::is_stdmethod("UNKNOWN METHOD", id));
    EXPECT_EQ(id, mid_count);
}

TEST_F(TypeEdge, set_hash_on_string_has_no_effect) {
    auto const hash = cat::type_string().hash_hook();
    cat::type_string().set_hash(cat::hash_int, cat::heq_int);
    EXPECT_EQ(cat::type_string().hash_hook(), hash);
    EXPECT_EQ(cat::type_string().hashfun(key("ab")), (97u * 31) ^ 98u);
}

TEST_F(TypeEdge, inherited_converters_replace_those_of_the_same_source) {
    cTypeObj a("a"), b("b");
    a.set_converter(cat::type_int(), convert_a);
    a.set_converter(cat::type_bool(), convert_a);
    b.set_converter(cat::type_int(), convert_b);
    a.inherit_converters(b);
    EXPECT_EQ(a.converter(cat::type_int()), convert_b);
    EXPECT_EQ(a.converter(cat::type_bool()), convert_a);
}

namespace {

class cUnsigned : public cObjD<int> {
  public:
    cUnsigned(int n, cTypeObj *type) : cObjD<int>(n, type) {}
};

} // namespace

TEST_F(TypeEdge, a_type_named_unsigned_has_the_integer_hooks) {
    cTypeObj type("unsigned");
    EXPECT_TRUE(type.is_keytype());
    EXPECT_EQ(type.hash_hook(), cat::hash_int);
    objref const number = objref::adopt(new cUnsigned(7, &type));
    EXPECT_EQ(type.hashfun(number), 7u);
    EXPECT_TRUE(type.hasheq(number, cat::of(7)));
    EXPECT_EQ(&cat::find_type("unsigned"), &cat::type_nil());
}

TEST_F(TypeEdge, a_null_name_with_a_metatype_is_empty) {
    cTypeObj const type(&cat::typetype(), nullptr, nullptr);
    EXPECT_EQ(type.name(), "");
    EXPECT_EQ(&type.type(), &cat::typetype());
}

TEST_F(TypeEdge, niltype_creates_strings) {
    objref const text = cat::type_nil().newobj();
    EXPECT_EQ(&text->type(), &cat::type_string());
    EXPECT_EQ(cat::as_string(text), "");
}

TEST_F(Type, the_names_of_the_methods_are_in_order) {
    std::string all;
    for (int i = 0; i < mid_count; ++i) {
        method_id id = mid_count;
        EXPECT_TRUE(cTypeObj::is_stdmethod(cTypeObj::name_of(i), id));
        EXPECT_EQ(static_cast<int>(id), i);
        all += cTypeObj::name_of(i) + " ";
    }
    EXPECT_EQ(all,
              "newobj newref create assign add setattr getattr write read equal less iterobj ");
}

TEST_F(Type, a_new_type_has_the_default_methods_and_no_others) {
    cTypeObj const type("plain");
    std::string keys;
    for (cAttrNode const *node = type.tmmap().first(); node; node = type.tmmap().next(node))
        keys += cat::as_string(node->key()) + " ";
    EXPECT_EQ(keys, "create write read equal iterobj ");
    EXPECT_EQ(&type.type(), &cat::typetype());
    EXPECT_TRUE(type.is_type());
    cMapObj obj(const_cast<cTypeObj *>(&type), true), other(const_cast<cTypeObj *>(&type), true);
    EXPECT_TRUE(obj.equal(obj));
    EXPECT_FALSE(obj.equal(other));
    EXPECT_TRUE(obj.iterobj() == cat::bad());
}

TEST_F(Type, a_missing_procedure_raises_and_is_true_when_forgiven) {
    cTypeObj type("plain");
    cMapObj obj(&type, true);
    {
        cErrorLog errors;
        EXPECT_FALSE(obj.assign(*cat::of(1)));
        EXPECT_EQ(errors.text(),
                  "0x48000000 Call of missed standard method 'assign' in type: plain\n");
    }
    cat::errhandler() = cErrHandler(0, 0x08000000u, 0xFFFFFFFFu);
    EXPECT_TRUE(obj.assign(*cat::of(1)));
    EXPECT_TRUE(obj.setattr(key("k"), cat::of(1)));
}

TEST_F(Type, a_missing_function_is_bad_or_nil_when_forgiven) {
    cTypeObj type("plain");
    cMapObj obj(&type, true);
    {
        cErrorLog errors;
        EXPECT_TRUE(obj.getattr(key("k")) == cat::bad());
        EXPECT_TRUE(obj.newref() == cat::bad());
        EXPECT_TRUE(type.newobj() == cat::bad());
        EXPECT_EQ(errors.text(),
                  "0x48000000 Call of missed standard method 'getattr' in type: plain\n"
                  "0x48000000 Call of missed standard method 'newref' in type: plain\n"
                  "0x48000000 Call of missed standard method 'newobj' in type: plain\n");
    }
    cat::errhandler() = cErrHandler(0, 0x08000000u, 0xFFFFFFFFu);
    EXPECT_TRUE(obj.getattr(key("k")) == cat::nil());
}

TEST_F(Type, the_first_hash_hooks_win) {
    cTypeObj type("k");
    EXPECT_FALSE(type.is_keytype());
    EXPECT_EQ(type.hashfun(cat::of(5)), 0u);
    EXPECT_FALSE(type.hasheq(cat::of(5), cat::of(5)));
    type.set_hash(cat::hash_int, cat::heq_int);
    type.set_hash(cat::hash_string, cat::heq_string);
    EXPECT_EQ(type.hash_hook(), cat::hash_int);
    EXPECT_EQ(type.heq_hook(), cat::heq_int);
}

TEST_F(Type, the_built_in_types_have_their_hashes) {
    EXPECT_EQ(cat::type_int().hashfun(cat::of(-1)), 0xFFFFFFFFu);
    EXPECT_EQ(cat::type_string().hashfun(cat::of("")), 0u);
    EXPECT_EQ(cat::type_string().hashfun(cat::of("\xE4")), 0xE4u);
    EXPECT_EQ(cat::type_string().hashfun(cat::of(std::string("a\0b", 3))), 97u);
    // the four bytes 00 00 80 3f
    EXPECT_EQ(cat::type_float().hashfun(cat::of(1.0f)), (0x80u * 31) ^ 0x3fu);
    EXPECT_EQ(cat::type_double().hashfun(cat::of(1.0)), (0xf0u * 31) ^ 0x3fu);
    EXPECT_FALSE(cat::type_bool().is_keytype());
}

TEST_F(Type, keys_of_different_types_never_match) {
    EXPECT_FALSE(cat::type_int().hasheq(cat::of(1), cat::of(1.0f)));
    EXPECT_FALSE(cat::type_float().hasheq(cat::of(1.0f), cat::of(1.0)));
    EXPECT_FALSE(cat::type_string().hasheq(cat::of("1"), cat::of(1)));
    EXPECT_TRUE(cat::type_double().hasheq(cat::of(0.0), cat::of(-0.0)));
}

TEST_F(Type, a_nan_key_equals_every_key) {
    double const nan = std::numeric_limits<double>::quiet_NaN();
    EXPECT_TRUE(cat::type_double().hasheq(cat::of(nan), cat::of(5.0)));
    EXPECT_TRUE(cat::type_double().hasheq(cat::of(5.0), cat::of(nan)));
}

TEST_F(Type, a_null_converter_removes_a_converter) {
    cTypeObj type("t");
    EXPECT_EQ(type.converter(cat::type_int()), nullptr);
    type.set_converter(cat::type_int(), convert_a);
    type.set_converter(cat::type_int(), convert_b);
    EXPECT_EQ(type.converter(cat::type_int()), convert_b);
    type.set_converter(cat::type_int(), nullptr);
    EXPECT_EQ(type.converter(cat::type_int()), nullptr);
}

TEST_F(Type, types_compare_by_identity_and_set_name_leaves_the_registry) {
    cTypeObj a("same"), b("same");
    EXPECT_TRUE(a == a);
    EXPECT_TRUE(a != b);
    a.set_name("other");
    EXPECT_EQ(a.name(), "other");
    EXPECT_EQ(&cat::find_type("other"), &cat::type_nil());
}

namespace {

int setups = 0;
void count_setup(cTypeObj &) { ++setups; }

std::string created;
bool note_create(cObj &obj) {
    created += static_cast<cTypeObj &>(obj).name() + ";";
    return true;
}

} // namespace

TEST_F(Type, setup_runs_once_and_a_metatype_fills_its_instances) {
    setups = 0;
    cTypeObj const named("n", count_setup), unnamed(count_setup);
    EXPECT_EQ(setups, 2);
    EXPECT_EQ(unnamed.name(), "");
    created.clear();
    cTypeObj meta("meta");
    meta.set_tmember("create", make<cExeMember>(note_create));
    cTypeObj const made(&meta, "made", count_setup);
    EXPECT_EQ(created, "made;");
    EXPECT_EQ(setups, 3);
    cTypeObj const of_nil(&cat::type_nil(), "x", nullptr);
    EXPECT_EQ(created, "made;");
}

TEST_F(TypeMemberEdge, nil_under_a_standard_key_is_ignored) {
    cTypeObj type("t");
    type.set_tmember("assign", make<cExeMember>(procedure_2));
    type.set_tmember("assign", cat::nil());
    EXPECT_NE(type.method(mid_assign), nullptr);
    EXPECT_TRUE(type.tmember("assign")->is_exe());
}

TEST_F(TypeMemberEdge, badfind_under_a_standard_key_empties_the_slot) {
    cTypeObj type("t");
    type.set_tmember("assign", make<cExeMember>(procedure_2));
    type.set_tmember("assign", cat::badfind());
    EXPECT_EQ(type.method(mid_assign), nullptr);
    EXPECT_TRUE(type.tmember("assign") == cat::badfind());
    cMapObj obj(&type, true);
    cErrorLog errors;
    EXPECT_FALSE(obj.assign(*cat::of(1)));
    EXPECT_EQ(errors.text(), "0x48000000 Call of missed standard method 'assign' in type: t\n");
}

TEST_F(TypeMember, a_standard_key_accepts_only_members) {
    cTypeObj type("t");
    cErrorLog errors;
    type.set_tmember("assign", make<cExeGlobal>(procedure_2));
    type.set_tmember("my key", make<cExeGlobal>(procedure_2));
    EXPECT_EQ(errors.text(), "0x50000000 Executable, key 'assign', must be cExeMember\n");
    EXPECT_EQ(type.method(mid_assign), nullptr);
    EXPECT_TRUE(type.tmember("my key")->is_exe());
}

TEST_F(TypeMember, a_wrong_prototype_is_refused_for_every_method) {
    // For each id the index of the only matching prototype of the seven.
    int const fits[mid_count] = {1, 1, 4, 5, 5, 6, 2, 5, 5, 5, 5, 1};
    for (int id = 0; id < mid_count; ++id) {
        objref const exes[] = {make<cExeMember>(no_args),     make<cExeMember>(one_arg),
                               make<cExeMember>(two_args),    make<cExeMember>(three_args),
                               make<cExeMember>(procedure_1), make<cExeMember>(procedure_2),
                               make<cExeMember>(procedure_3)};
        for (int i = 0; i < 7; ++i) {
            cTypeObj type("t");
            type.set_tmember(cTypeObj::name_of(id), objref());
            cErrorLog errors;
            type.set_tmember(cTypeObj::name_of(id), exes[i]);
            EXPECT_EQ(type.method(static_cast<method_id>(id)) != nullptr, i == fits[id]);
            EXPECT_EQ(errors.text(), i == fits[id]
                                         ? ""
                                         : "0x50000000 Standard method '" + cTypeObj::name_of(id) +
                                               "'  has bad prototype in object type: type\n");
        }
    }
}

TEST_F(TypeMember, validate_exe_is_false_even_when_forgiven) {
    objref const exe = make<cExeMember>(procedure_1);
    objref const global = make<cExeGlobal>(procedure_2);
    auto const &member = static_cast<cExeFunction const &>(*exe);
    cat::errhandler() = cErrHandler(0, 0x10000000u, 0xFFFFFFFFu);
    EXPECT_FALSE(cTypeObj::validate_exe(mid_assign, member, "t"));
    EXPECT_TRUE(cTypeObj::validate_exe(mid_create, member, "t"));
    EXPECT_FALSE(cTypeObj::validate_exe(-1, member, "t"));
    EXPECT_FALSE(cTypeObj::validate_exe(mid_count, member, nullptr));
    EXPECT_FALSE(
        cTypeObj::validate_exe(mid_assign, static_cast<cExeFunction const &>(*global), "t"));
}

TEST_F(TypeMember, a_bad_prototype_is_thrown_by_the_default_handler) {
    cTypeObj type("t");
    EXPECT_THROW(type.set_tmember("assign", make<cExeMember>(procedure_1)), cErr);
    EXPECT_EQ(messages(), "Standard method 'assign'  has bad prototype in object type: type\n");
    EXPECT_EQ(type.method(mid_assign), nullptr);
}

TEST_F(TypeMember, data_members_can_be_added_and_removed) {
    cTypeObj type("t");
    type.set_tmember("wformat", cat::of("sc"));
    EXPECT_EQ(cat::as_string(type.tmember("wformat")), "sc");
    EXPECT_TRUE(type.tmember("none") == cat::badfind());
    type.set_tmember("wformat", objref());
    EXPECT_TRUE(type.tmember("wformat") == cat::badfind());
}

TEST_F(TypeMember, inherit_shares_members_in_order_and_overwrites) {
    cTypeObj base("base"), derived("derived");
    base.set_tmember("assign", make<cExeMember>(procedure_2));
    base.set_tmember("note", cat::of("base"));
    base.set_converter(cat::type_int(), convert_a);
    derived.set_tmember("note", cat::of("derived"));
    derived.set_tmember("own", cat::of(1));
    derived.inherit(base);
    EXPECT_TRUE(derived.tmember("note") == base.tmember("note"));
    EXPECT_TRUE(derived.tmember("assign") == base.tmember("assign"));
    EXPECT_EQ(derived.method(mid_assign), base.method(mid_assign));
    EXPECT_TRUE(cat::is_equal(derived.tmember("own"), 1));
    EXPECT_EQ(derived.converter(cat::type_int()), nullptr);
    derived.inherit(derived);
    EXPECT_TRUE(cat::is_equal(derived.tmember("own"), 1));
}

TEST_F(TypeMember, update_from_needs_the_same_metatype) {
    cTypeObj a("a"), b("b");
    cTypeObj const choice(&cat::typetype_choice(), "c", nullptr);
    EXPECT_TRUE(a.update_from(b));
    EXPECT_FALSE(a.update_from(choice));
}

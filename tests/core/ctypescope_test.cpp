// cat::TypeScope: the types that leave the registry, their destruction, the types that they hide,
// and objects that outlive the scope.
#include "qrv/core/ctypescope.h"

#include "containers/cregistry_check.h"
#include "qrv/containers/cattr.h"
#include "qrv/containers/cattspec.h"
#include "qrv/containers/cchoiceval.h"
#include "qrv/containers/cmapobj.h"
#include "qrv/containers/ctypeobj_update.h"
#include "qrv/core/cexe.h"
#include "qrv/core/cmodifier.h"
#include "qrv/core/cobjd.h"
#include "qrv/core/ctypes.h"
#include "qrv/text/read/creadreport.h"
#include "qrv/text/write/cwriter.h"
#include "tests/support/fixture.h"
#include "tests/support/objects.h"
#include "tests/support/sanitized.h"

#include <fstream>
#include <gmock/gmock.h>
#include <memory>
#include <stdexcept>
#include <unistd.h>

namespace {

class TypeScopes : public QrvTest {
  protected:
    ~TypeScopes() override { EXPECT_EQ(cat::broken_registry_rule(), ""); }
};

using test::read;

using test::is_known;

std::string text_of(objref const &value) { return cat::as_text(value); }

// The attributes with their values, and how the type is declared.
std::string rules_of(objref const &value) {
    std::ostringstream os;
    value->type().write(os);
    return value->type().name() + ": " + os.str();
}

char const *const point = "{Point = attlist{x = attspec(default = 1); y = attspec(default = 2)};"
                          " p = Point(x = 5)}";

std::uint32_t census() { return cObjBase::ob_count(); }

// Kilobytes of this process in memory.
long resident() {
    long size = 0, pages = 0;
    std::ifstream("/proc/self/statm") >> size >> pages;
    return pages * (sysconf(_SC_PAGESIZE) / 1024);
}

} // namespace

TEST_F(TypeScopes, a_declared_type_is_removed_at_the_end) {
    {
        cat::TypeScope const scope;
        read(point);
        EXPECT_TRUE(is_known("Point"));
    }
    EXPECT_FALSE(is_known("Point"));
}

TEST_F(TypeScopes, without_a_scope_a_declared_type_stays) {
    std::uint32_t const before = census();
    EXPECT_EQ(cat::TypeScope::current(), nullptr);
    read("{Stays = choice({a = 1; b = 2})}");
    EXPECT_TRUE(is_known("Stays"));
    EXPECT_FALSE(cat::find_type("Stays").counts_objects());
    cat::typemap().datamap().delitem("Stays");
    EXPECT_EQ(census(), before);
}

TEST_F(TypeScopes, an_object_is_used_after_the_scope) {
    std::uint32_t const before = census();
    objref p;
    std::string text, rules;
    {
        cat::TypeScope const scope;
        p = read(point)->getattr(own_key("p"));
        text = text_of(p);
        rules = rules_of(p);
    }
    EXPECT_EQ(text_of(p), text);
    EXPECT_EQ(rules_of(p), rules);
    EXPECT_EQ(p->type().objects(), 1U);
    objref copy = p->clone();
    EXPECT_TRUE(copy->equal(p));
    EXPECT_TRUE(copy->setattr(own_key("x"), cat::of(7)));
    EXPECT_FALSE(copy->equal(p));
    p = nullptr;
    EXPECT_EQ(text_of(copy->getattr(own_key("x"))), "7");
    EXPECT_EQ(text_of(copy->getattr(own_key("y"))), "2");
    copy = nullptr;
    EXPECT_EQ(census(), before);
}

TEST_F(TypeScopes, another_scope_can_declare_the_same_types_again) {
    std::uint32_t const before = census();
    std::vector<typeref> types;
    {
        cat::TypeScope const scope;
        objref const root = read(point);
        read("{Point = choice({north = 1}); Mode = choice({off = 0})}");
        types = scope.types();
    }
    ASSERT_EQ(types.size(), 2U);
    {
        cat::TypeScope again;
        for (typeref const &type : types) EXPECT_TRUE(again.declare(*type, ""));
        EXPECT_EQ(text_of(read("Mode(off)")), "Mode(off)");
        EXPECT_EQ(&cat::find_type("Mode"), types[1].get());
    }
    EXPECT_FALSE(is_known("Mode"));
    types.clear();
    EXPECT_EQ(census(), before);
}

TEST_F(TypeScopes, a_second_file_declares_the_name_differently) {
    objref p, q;
    {
        cat::TypeScope const scope;
        p = read(point)->getattr(own_key("p"));
    }
    {
        cat::TypeScope const scope;
        q = read("{Point = choice({north = 1; south = 2}); p = Point(south)}")
                ->getattr(own_key("p"));
        EXPECT_EQ(&cat::find_type("Point"), &q->type());
        EXPECT_NE(&p->type(), &q->type());
        EXPECT_THAT(text_of(p), ::testing::StartsWith("Point"));
    }
    EXPECT_EQ(p->type().name(), q->type().name());
    EXPECT_FALSE(p->equal(q));
    EXPECT_NE(rules_of(p), rules_of(q));
    EXPECT_EQ(text_of(q), "Point(south)");
}

namespace {

void read_files(int count, char const *text) {
    for (int i = 0; i < count; ++i) {
        cat::TypeScope const scope;
        read(text);
    }
}

} // namespace

TEST_F(TypeScopes, ten_thousand_files_leave_no_types) {
    char const *const text = "{T = attlist{a = attspec(default = 1)}; t = T(a = 2)}";
    constexpr int some = 1000, all = 10000;
    read_files(some, text);
    std::uint32_t const before = census();
    unsigned int const types = cat::typemap().datamap().used();
    long const memory = resident();
    read_files(all - some, text);
    EXPECT_EQ(census(), before);
    EXPECT_EQ(cat::typemap().datamap().used(), types);
    if (!test::sanitized) { // sanitizers keep freed memory in quarantine
        EXPECT_LT(resident() - memory, 512);
    }
}

TEST_F(TypeScopes, files_whose_types_refer_to_each_other_leave_nothing) {
    char const *const text =
        "{T = attlist{a = attspec(default = 1)}; C = choice({x = 1; y = 2}); U = attlist{t ="
        " attspec(type = \"T\"); d = attspec(default = T(a = 3))}; t = T(a = 2); c = C(y);"
        " u = U(t = T(a = 4)); N = attlist{}; N = attlist{n = attspec(type = \"N\"; flag ="
        " #IMPLIED)}; n = N(n = N())}";
    std::uint32_t const before = census();
    read_files(1, text);
    EXPECT_EQ(census(), before);
    read_files(300, text);
    EXPECT_EQ(census(), before);
    EXPECT_EQ(messages(), "");
}

TEST_F(TypeScopes, an_outer_type_is_hidden_and_restored) {
    cat::TypeScope const outer;
    objref const p = read(point)->getattr(own_key("p"));
    std::string const rules = rules_of(p);
    std::string keys;
    {
        cat::TypeScope const inner;
        EXPECT_EQ(cat::TypeScope::current(), &inner);
        objref const q = read("{Point = attlist{z = attspec(default = 3)}; p = Point()}");
        EXPECT_NE(&cat::find_type("Point"), &p->type());
        EXPECT_EQ(rules_of(p), rules);
        objref const again = read("{Point = attlist{w = attspec(default = 3)}}");
        EXPECT_EQ(&cat::find_type("Point"), &q->getattr(own_key("p"))->type());
    }
    EXPECT_EQ(cat::TypeScope::current(), &outer);
    EXPECT_EQ(&cat::find_type("Point"), &p->type());
    EXPECT_EQ(rules_of(p), rules);
}

TEST_F(TypeScopes, a_type_of_a_program_stays_and_can_be_hidden) {
    typeref const own = make<cTypeObj>("Own");
    cTypeInsert const insert(*own);
    {
        cat::TypeScope const scope;
        typeref const late = make<cTypeObj>("Late");
        EXPECT_TRUE(cTypeInsert::insert(late, false));
        read("{Own = choice({a = 1; b = 2})}");
        EXPECT_NE(&cat::find_type("Own"), own.get());
        read("{Late = choice({a = 1; b = 2})}");
        EXPECT_NE(&cat::find_type("Late"), late.get());
    }
    EXPECT_EQ(&cat::find_type("Own"), own.get());
    EXPECT_TRUE(is_known("Late"));
    cat::typemap().datamap().delitem("Late");
}

TEST_F(TypeScopes, a_hidden_type_that_its_program_removes_is_not_restored) {
    {
        typeref const own = make<cTypeObj>("Own");
        auto insert = std::make_unique<cTypeInsert>(*own);
        cat::TypeScope const scope;
        read("{Own = choice({a = 1; b = 2})}");
        insert = nullptr;
        EXPECT_TRUE(is_known("Own"));
    }
    EXPECT_FALSE(is_known("Own"));
}

TEST_F(TypeScopes, a_built_in_type_is_not_hidden) {
    cat::ReadReport report;
    cat::TypeScope const scope;
    objref value;
    cObj::readobj("{string = attlist{}; niltype = choice({a = 1}); attlist = choice({b = 1})}",
                  value);
    EXPECT_EQ(report.count(), 3U);
    EXPECT_EQ(&cat::find_type("string"), &cat::type_string());
    EXPECT_EQ(&cat::find_type("attlist"), &cat::typetype_attlist());
}

TEST_F(TypeScopes, scopes_may_end_in_any_order) {
    auto const type = [] { return &cat::find_type("T"); };
    auto first = std::make_unique<cat::TypeScope>();
    read("{T = choice({a = 1})}");
    auto second = std::make_unique<cat::TypeScope>();
    read("{T = choice({b = 1})}");
    auto third = std::make_unique<cat::TypeScope>();
    read("{T = choice({c = 1})}");
    cTypeObj *const of_third = type();
    second = nullptr;
    EXPECT_EQ(type(), of_third);
    EXPECT_EQ(cat::TypeScope::current(), third.get());
    first = nullptr;
    EXPECT_EQ(type(), of_third);
    third = nullptr;
    EXPECT_FALSE(is_known("T"));
    EXPECT_EQ(cat::TypeScope::current(), nullptr);
}

TEST_F(TypeScopes, an_exception_ends_the_scope) {
    std::uint32_t const before = census();
    try {
        cat::TypeScope const scope;
        objref const value = read(point);
        throw std::runtime_error("enough");
    } catch (std::runtime_error const &) {
    }
    EXPECT_FALSE(is_known("Point"));
    EXPECT_EQ(census(), before);
}

TEST_F(TypeScopes, a_handle_keeps_a_type_alive_without_objects) {
    std::uint32_t const before = census();
    typeref type;
    {
        cat::TypeScope const scope;
        objref const p = read(point)->getattr(own_key("p"));
        type = typeref::share(&p->type());
    }
    EXPECT_EQ(type->refs(), 1U);
    EXPECT_EQ(type->objects(), 0U);
    objref made = type->newobj();
    type = nullptr;
    EXPECT_EQ(made->type().refs(), 0U);
    EXPECT_EQ(text_of(made->getattr(own_key("y"))), "2");
    type = typeref::share(&made->type());
    made = nullptr;
    EXPECT_EQ(type->name(), "Point");
    type = nullptr;
    EXPECT_EQ(census(), before);
}

TEST_F(TypeScopes, the_count_of_owners_shows_no_objects) {
    cat::TypeScope const scope;
    objref const value = read(point);
    cTypeObj const &type = cat::find_type("Point");
    EXPECT_EQ(type.refs(), 3U); // the registry, the scope and the map
    EXPECT_EQ(type.objects(), 1U);
}

TEST_F(TypeScopes, an_object_that_changes_its_type_is_counted_where_it_is) {
    cat::TypeScope const scope;
    read("{A = choice({a = 1}); B = choice({b = 1})}");
    cTypeObj &a = cat::find_type("A"), &b = cat::find_type("B");
    objref const obj = make<cObjD<int>>(1);
    EXPECT_FALSE(obj->holds_type());
    obj->set_type(&a);
    obj->set_type(&a);
    EXPECT_EQ(a.objects(), 1U);
    obj->set_type(&b);
    EXPECT_EQ(a.objects(), 0U);
    EXPECT_EQ(b.objects(), 1U);
    EXPECT_EQ(obj->object_class(), cObjClass::integer);
    obj->set_type(&cat::type_int());
    EXPECT_EQ(b.objects(), 0U);
    EXPECT_FALSE(obj->holds_type());
}

TEST_F(TypeScopes, a_scalar_in_a_map_keeps_its_type_until_the_map_ends) {
    std::uint32_t const before = census();
    cRef<cMapObj> map = make<cMapObj>();
    {
        cat::TypeScope const scope;
        read("{Unit = choice({a = 1})}");
        map->datamap().mapitem("n", make<cObjD<int>>(1, &cat::find_type("Unit")));
    }
    EXPECT_EQ(map->datamap().getitem("n")->type().name(), "Unit");
    map = nullptr;
    EXPECT_EQ(census(), before);
}

TEST_F(TypeScopes, types_keep_the_types_alive_to_which_they_refer) {
    std::uint32_t const before = census();
    objref u;
    {
        cat::TypeScope const scope;
        u = read("{T = attlist{a = attspec(default = 1)}; U = attlist{t = attspec(type = \"T\"; "
                 "flag ="
                 " #IMPLIED)}; u = U()}")
                ->getattr(own_key("u"));
    }
    objref const spec = u->type().getattr(own_key("t"));
    EXPECT_EQ(static_cast<cAttspec &>(*spec).get_type()->name(), "T");
    EXPECT_THAT(rules_of(u), ::testing::HasSubstr("type=T"));
    objref t = static_cast<cAttspec &>(*spec).get_type()->newobj();
    EXPECT_TRUE(u->setattr(own_key("t"), t));
    const_cast<objref &>(spec) = nullptr;
    u = t = nullptr;
    EXPECT_EQ(census(), before);
}

TEST_F(TypeScopes, types_that_name_themselves_or_each_other_are_destroyed) {
    char const *const texts[] = {
        "{N = attlist{}; N = attlist{next = attspec(type = \"N\"; flag = #IMPLIED)}; n = N(next = "
        "N())}",
        "{A = attlist{}; B = attlist{a = attspec(type = \"A\"; flag = #IMPLIED)};"
        " A = attlist{b = attspec(type = \"B\"; flag = #IMPLIED)}; x = A(b = B())}",
        "{A = attlist{}; A = attlist{a = attspec(default = A())}; x = A()}"};
    for (char const *const text : texts) {
        std::uint32_t const before = census();
        {
            cat::TypeScope const scope;
            read(text);
        }
        EXPECT_EQ(census(), before) << text;
        objref value;
        {
            cat::TypeScope const scope;
            value = read(text);
        }
        std::string const written = text_of(value);
        { cat::TypeScope const scope; }
        EXPECT_EQ(text_of(value), written);
        value = nullptr;
        { cat::TypeScope const scope; }
        EXPECT_EQ(census(), before) << text;
    }
}

TEST_F(TypeScopes, a_specification_and_a_map_keep_a_type_alive) {
    std::uint32_t const before = census();
    {
        cRef<cMapObj> const map = make<cMapObj>();
        specref const spec = make<cAttspec>(0, nullptr);
        {
            cat::TypeScope const scope;
            read(point);
            map->set_entrytype(&cat::find_type("Point"));
            spec->set_type(&cat::find_type("Point"));
        }
        EXPECT_EQ(map->entrytype()->name(), "Point");
        EXPECT_EQ(spec->get_type(), map->entrytype());
        map->set_entrytype(&cat::type_int());
        EXPECT_EQ(map->entrytype(), &cat::type_int());
        map->set_entrytype(spec->get_type());
    }
    EXPECT_EQ(census(), before);
}

TEST_F(TypeScopes, a_converter_from_a_destroyed_type_is_not_found_for_another) {
    cTypeObj *former = nullptr;
    typeref const target = make<cTypeObj>("Target");
    {
        cat::TypeScope const scope;
        read("{From = choice({a = 1})}");
        former = &cat::find_type("From");
        target->set_converter(*former, [](cObj &, objref &) { return true; });
        EXPECT_TRUE(target->converter(*former));
    }
    typeref next;
    std::vector<typeref> held;
    for (int i = 0; i < 100 && next != former; ++i) { // usually the same memory at once
        next = make<cTypeObj>("Next");
        held.push_back(next);
    }
    EXPECT_FALSE(target->converter(*next));
}

TEST_F(TypeScopes, the_members_of_a_type_are_destroyed_with_it) {
    std::uint32_t const before = census();
    {
        cat::TypeScope const scope;
        objref const p = read(point)->getattr(own_key("p"));
        p->type().set_tmember(std::string("unit"), cat::of("mm"));
        EXPECT_EQ(text_of(p->gmember("unit")), "mm");
    }
    EXPECT_EQ(census(), before);
}

TEST_F(TypeScopes, a_type_of_a_program_that_text_renames_gets_its_name_back) {
    typeref const own = make<cTypeObj>(&cat::typetype_choice(), "Own", nullptr);
    cTypeInsert const insert(*own);
    cat::constmap().datamap().mapitem("own", objref(own));
    {
        cat::TypeScope const scope;
        read("{Other = #own}");
        EXPECT_EQ(&cat::find_type("Other"), own.get());
        EXPECT_EQ(own->name(), "Other");
    }
    EXPECT_FALSE(is_known("Other"));
    EXPECT_EQ(&cat::find_type("Own"), own.get());
    EXPECT_EQ(own->name(), "Own");
    cat::constmap().datamap().delitem("own");
}

namespace {

// A type whose objects read another file, in a separate scope, in the middle of a reading.
bool read_other_file(cObj &, objref &) {
    cat::TypeScope const scope;
    objref const value = read("{Point = choice({inside = 1}); p = Point(inside)}");
    return text_of(value->getattr(own_key("p"))) == "Point(inside)";
}

objref new_includer(objref type) {
    return objref::adopt(new cObjD<int>(0, static_cast<cTypeObj *>(type.get())));
}

} // namespace

TEST_F(TypeScopes, a_scope_within_a_reading_hides_nothing_afterwards) {
    typeref const includer = make<cTypeObj>("Includer");
    includer->set_tmember(std::string("newobj"), make<cExeMember>(new_includer));
    includer->set_tmember(std::string("read"), make<cExeMember>(read_other_file));
    cTypeInsert const insert(*includer);
    cat::TypeScope const scope;
    objref const value = read("{Point = attlist{x = attspec(default = 1)}; a = Includer(1);"
                              " p = Point(x = 2)}");
    EXPECT_EQ(text_of(value->getattr(own_key("p"))->getattr(own_key("x"))), "2");
}

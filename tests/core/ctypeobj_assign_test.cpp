// Assigning executables and type objects: they have no value to copy, so no operation of a map
// copies anything.
#include "qrv/containers/cattr.h"
#include "qrv/containers/cmapobj.h"
#include "qrv/core/cexe.h"
#include "qrv/core/cobjd.h"
#include "qrv/text/write/cwriter.h"
#include "tests/support/fixture.h"
#include "tests/support/objects.h"

namespace {

class AssignType : public QrvTest {};

using test::key;

using test::accept;
bool refuse(cObj &, objref &) { return false; }
objref none(objref) { return cat::nil(); }

std::uintptr_t function_of(objref const &exe) {
    return reinterpret_cast<std::uintptr_t>(dynamic_cast<cExeFunction const &>(*exe).function());
}

// An object that claims to be an executable and holds a string.
objref string_object(char const *text, cTypeObj &type) {
    return objref::adopt(new cObjD<std::string>(std::string(text), &type));
}

} // namespace

TEST_F(AssignType, an_executable_cannot_be_assigned_another_executable) {
    objref const a = make<cExeMember>(accept);
    objref const b = make<cExeMember>(refuse);
    cErrorLog errors;
    EXPECT_FALSE(a->assign(*b));
    EXPECT_FALSE(a->assign(b));
    EXPECT_EQ(errors.text(), "");
    EXPECT_NE(function_of(a), function_of(b));
}

TEST_F(AssignType, an_executable_cannot_be_assigned_a_string_or_a_number) {
    objref const exe = make<cExeMember>(accept);
    std::uintptr_t const before = function_of(exe);
    cErrorLog errors;
    EXPECT_FALSE(exe->assign(cat::of("text")));
    EXPECT_FALSE(exe->assign(cat::of(1)));
    EXPECT_EQ(errors.text(), "");
    EXPECT_EQ(function_of(exe), before);
}

TEST_F(AssignType, an_executable_assigned_to_itself_is_unchanged) {
    objref const exe = make<cExeMember>(accept);
    std::uintptr_t const before = function_of(exe);
    EXPECT_TRUE(exe->assign(exe));
    EXPECT_TRUE(exe->assign(*exe));
    EXPECT_EQ(function_of(exe), before);
}

TEST_F(AssignType, a_type_cannot_be_assigned_another_type) {
    EXPECT_FALSE(cat::type_int().assign(cat::type_float()));
    EXPECT_TRUE(cat::type_int().assign(cat::type_int()));
    EXPECT_EQ(cat::type_int().name(), "int");
}

TEST_F(AssignType, string_objects_that_claim_the_type_exe_can_be_assigned) {
    objref const a = string_object("a", cat::type_exe());
    EXPECT_TRUE(a->assign(string_object("b", cat::type_exe())));
    EXPECT_EQ(static_cast<cObjDR<std::string> &>(*a).val(), "b");
    EXPECT_FALSE(a->assign(make<cExeMember>(accept)));
    EXPECT_FALSE(make<cExeMember>(accept)->assign(a));
    EXPECT_EQ(static_cast<cObjDR<std::string> &>(*a).val(), "b");
}

TEST_F(AssignType, assigning_a_map_with_a_function_under_the_same_key_fails_for_that_key) {
    auto const a = make<cMapObj>();
    auto const b = make<cMapObj>();
    objref const kept = make<cExeMember>(accept);
    a->setattr(key("f"), kept);
    b->setattr(key("f"), make<cExeMember>(refuse));
    a->setattr(key("n"), cat::of(1));
    b->setattr(key("n"), cat::of(2));
    EXPECT_FALSE(a->assign(*b));
    EXPECT_EQ(a->getattr(key("f")), kept);
    EXPECT_EQ(cat::as_text(a->getattr(key("n"))), "2");
}

TEST_F(AssignType, maps_that_share_a_function) {
    auto const a = make<cMapObj>();
    auto const b = make<cMapObj>();
    objref const shared = make<cExeMember>(accept);
    a->setattr(key("f"), shared);
    b->setattr(key("f"), shared);
    EXPECT_TRUE(a->assign(*b));
    EXPECT_EQ(a->getattr(key("f")), shared);
}

TEST_F(AssignType, a_map_of_types_assigned_to_another) {
    auto const a = make<cMapObj>();
    auto const b = make<cMapObj>();
    typeref const own = make<cTypeObj>("assign_type_own", nullptr);
    a->setattr(key("t"), own);
    b->setattr(key("t"), objref::share(&cat::type_float()));
    EXPECT_FALSE(a->assign(*b));
    EXPECT_EQ(a->getattr(key("t")), own);
    EXPECT_EQ(own->name(), "assign_type_own");
}

TEST_F(AssignType, a_path_that_assigns_a_function_to_a_function) {
    auto const map = make<cMapObj>();
    objref const kept = make<cExeMember>(accept);
    objref const exe = make<cExeMember>(refuse);
    map->setattr(key("f"), kept);
    EXPECT_FALSE(map->setattrp("f = ", exe, false));
    EXPECT_EQ(map->getattr(key("f")), kept);
    EXPECT_TRUE(map->setattrp("f &= ", exe, false)); // stores
    EXPECT_EQ(map->getattr(key("f")), exe);
}

TEST_F(AssignType, the_global_members_restored_from_a_clone) {
    objref const save = cat::gmmap().clone();
    ASSERT_TRUE(cObj::is_good(save));
    objref const before = cat::gmmap().getattr(key("flags"));
    objref const exe = make<cExeMember>(none);
    cat::gmmap().setattr(key("flags"), exe);
    EXPECT_FALSE(cat::gmmap().assign(*save)); // assigning an executable fails
    EXPECT_EQ(cat::gmmap().getattr(key("flags")), exe);
    EXPECT_TRUE(cat::gmmap().attrcopy(*save, "0ss"));
    EXPECT_EQ(cat::gmmap().getattr(key("flags")), before);
}

// The end of a cat::TypeScope when memory runs out: it does not throw, its types leave the
// registry, and the types that they hid are visible again.
#include "tests/counted/counted.h"
#include "tests/support/fixture.h"

#include "containers/cregistry_check.h"
#include "qrv/containers/cmapobj.h"
#include "qrv/core/ctypes.h"
#include "qrv/core/ctypescope.h"
#include "qrv/text/write/cwriter.h"

#include <optional>

namespace {

class ScopeMemory : public QrvTest {
  protected:
    static bool is_known(char const *name) { return &cat::find_type(name) != &cat::type_nil(); }

    // Ends the scope with memory for `allowed` allocations. Returns how many it tried.
    static unsigned long long end(std::optional<cat::TypeScope> &scope, unsigned allowed) {
        unsigned long long const before = counted::allocations;
        counted::last_allocation = before + allowed;
        scope.reset();
        counted::last_allocation = ~0ULL;
        return counted::allocations - before;
    }
};

std::string const declarations =
    "{A= attlist(x= attspec(type= int); y= attspec(default= [1, 2]));\n"
    " B= attlist(a= attspec(type= A; flag= #REQUIRED)); a_choice= choice({a= 1; b= 2});\n"
    " a_name_that_is_longer_than_a_string_without_memory= attlist(x= attspec(default= 1));\n"
    " b= B(a= A(x= 1))}";

TEST_F(ScopeMemory, declared_types_leave_the_registry) {
    counted::read("{A= attlist(outer= attspec(type= int))}");
    cTypeObj const *const outer = &cat::find_type("A");
    unsigned allowed = 0;
    for (bool failed = true; failed; ++allowed) {
        std::optional<cat::TypeScope> scope(std::in_place);
        counted::read(declarations);
        EXPECT_TRUE(is_known("B"));
        EXPECT_NE(&cat::find_type("A"), outer);
        failed = end(scope, allowed) > allowed;
        EXPECT_FALSE(is_known("B")) << allowed;
        EXPECT_FALSE(is_known("a_choice")) << allowed;
        EXPECT_FALSE(is_known("a_name_that_is_longer_than_a_string_without_memory")) << allowed;
        EXPECT_EQ(&cat::find_type("A"), outer) << allowed;
        EXPECT_EQ(cat::broken_registry_rule(), "") << allowed;
    }
    EXPECT_GT(allowed, 1U);
    cat::typemap().datamap().delitem("A");
}

TEST_F(ScopeMemory, objects_outlive_the_end) {
    objref tree;
    {
        std::optional<cat::TypeScope> scope(std::in_place);
        tree = counted::read(declarations);
        end(scope, 0);
    }
    EXPECT_EQ(tree->getattrp("b/a")->type().name(), "A");
    EXPECT_EQ(cat::as_string(tree->getattrp("b/a/x")), "1");
}

} // namespace

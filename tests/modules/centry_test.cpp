// Typed entries of the repository.
#include "qrv/modules/centry.h"

#include "tests/support/fixture.h"

namespace {

class Entry : public QrvTest {};

struct cShape {
    virtual ~cShape() = default;
    virtual int corners() const { return 0; }
};
struct cOther {
    int number = 0;
};
struct cSquare final : cOther, cShape { // so that the addresses of the parts differ
    int corners() const override { return 4; }
};

} // namespace

TEST_F(Entry, is_found_with_its_base_type_until_it_is_destroyed) {
    cSquare square;
    {
        cEntry<cShape> const entry("square", &square, "four corners");
        EXPECT_TRUE(entry.is_entered());
        cShape const *const found = cat::find_entry<cShape>("square");
        ASSERT_EQ(found, &square);
        EXPECT_EQ(found->corners(), 4);
        EXPECT_EQ(cat::find_entry<cOther>("square"), nullptr);
        EXPECT_EQ(cat::find_entry<cShape>("circle"), nullptr);
        auto *const untyped = cRepoImpl::find(cRepoImpl::get(typeid(cShape)), "square");
        EXPECT_EQ(cRepoImpl::derivedtype(untyped), typeid(cSquare));
        EXPECT_EQ(cRepoImpl::comment(untyped), "four corners");
    }
    EXPECT_EQ(cat::find_entry<cShape>("square"), nullptr);
}

TEST_F(Entry, with_a_name_that_is_taken_enters_nothing) {
    cOther first, second;
    cEntry<cOther> const entry("number", &first);
    {
        cEntry<cOther> const again("number", &second);
        EXPECT_FALSE(again.is_entered());
        EXPECT_NE(messages().find("repository entry already defined:number"), std::string::npos);
    }
    EXPECT_EQ(cat::find_entry<cOther>("number"), &first);
}

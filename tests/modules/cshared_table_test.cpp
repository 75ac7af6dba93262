// External reference counts of arbitrary pointers.

#include "qrv/modules/crepository.h"

#include "modules/crepository_state.h"

#include <gtest/gtest.h>

namespace {

class SharedTable : public testing::Test {
  protected:
    void TearDown() override {
        for (void *pointer : {static_cast<void *>(&a), static_cast<void *>(&b)})
            cPutShared(pointer);
    }
    int a = 0, b = 0;
};
class SharedTableEdge : public SharedTable {};

TEST_F(SharedTable, each_pointer_has_its_own_count_that_starts_at_1) {
    cShared *const count_a = cGetShared(&a);
    cShared *const count_b = cGetShared(&b);
    EXPECT_NE(count_a, count_b);
    EXPECT_EQ(count_a->refs(), 1u);
    EXPECT_EQ(count_b->refs(), 1u);
}

TEST_F(SharedTable, handles_share_the_count) {
    auto first = cRef<cShared>::share(cGetShared(&a));
    auto const second = cRef<cShared>::share(cGetShared(&a));
    EXPECT_EQ(cGetShared(&a)->refs(), 3u);
    first = nullptr;
    EXPECT_EQ(cGetShared(&a)->refs(), 2u);
}

TEST_F(SharedTable, a_handle_keeps_the_count_after_its_removal_from_the_table) {
    auto const handle = cRef<cShared>::share(cGetShared(&a));
    cPutShared(&a);
    EXPECT_EQ(handle->refs(), 1u);
    cShared *const fresh = cGetShared(&a);
    EXPECT_NE(fresh, handle.get());
    EXPECT_EQ(fresh->refs(), 1u);
}

TEST_F(SharedTable, the_null_pointer_is_counted_too) {
    cShared *const count = cGetShared(nullptr);
    EXPECT_EQ(cGetShared(nullptr), count);
    cPutShared(nullptr);
}

TEST_F(SharedTable, putting_twice_or_without_a_table_does_nothing) {
    cGetShared(&a);
    cPutShared(&a);
    EXPECT_FALSE(cat::has_shared_table());
    cPutShared(&a);
    EXPECT_FALSE(cat::has_shared_table());
}

TEST_F(SharedTable, the_address_of_a_count_is_stable) {
    cShared *const count = cGetShared(&a);
    int many[100];
    for (int &n : many) cGetShared(&n);
    EXPECT_EQ(cGetShared(&a), count);
    for (int &n : many) cPutShared(&n);
    EXPECT_EQ(cGetShared(&a), count);
}

TEST_F(SharedTableEdge, putting_an_unknown_pointer_deletes_the_table_only_when_it_is_empty) {
    cShared *const count = cGetShared(&a);
    cPutShared(&b);
    EXPECT_TRUE(cat::has_shared_table());
    EXPECT_EQ(cGetShared(&a), count);
    cPutShared(&a);
    EXPECT_FALSE(cat::has_shared_table());
    cat::start_shared_table();
    EXPECT_TRUE(cat::has_shared_table());
    cPutShared(&b);
    EXPECT_FALSE(cat::has_shared_table());
}

TEST_F(SharedTableEdge, getting_a_pointer_twice_returns_the_same_count) {
    cShared *const count = cGetShared(&a);
    EXPECT_EQ(cGetShared(&a), count);
    EXPECT_EQ(count->refs(), 1u);
}

} // namespace

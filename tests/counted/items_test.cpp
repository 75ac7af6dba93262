// Walks over containers allocate nothing.
#include "qrv/containers/citems.h"
#include "qrv/core/cobjd.h"
#include "tests/counted/counted.h"

#include <gtest/gtest.h>

TEST(CountedItems, a_walk_allocates_nothing) {
    for (char const *text : {"{a = 1; b = 2; c = 3; }", "[1, 2, 3]", "<1, 2, 3>"}) {
        objref const tree = counted::read(text);
        auto const before = counted::allocations;
        int sum = 0;
        for (cat::Item const &item : cat::items(tree)) sum += cat::as_index(item.value());
        EXPECT_EQ(counted::allocations, before) << text;
        EXPECT_EQ(sum, 6);
    }
}

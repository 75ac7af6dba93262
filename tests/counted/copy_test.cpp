// The number of allocations per entry when a large tree is copied deeply.
#include "tests/counted/counted.h"
#include "tests/support/fixture.h"

#include "qrv/containers/cmapobj.h"

using namespace counted;

class CountedCopy : public QrvTest {};

TEST_F(CountedCopy, an_entry_needs_few_allocations) {
    objref const tree = read(data().attr);
    objref copy;
    auto const count = allocations_of([&] {
        copy = tree->clone();
        EXPECT_TRUE(cat::detach(copy, true));
    });
    EXPECT_GE(count, in_pool() ? 1 : data().entries);
    EXPECT_LE(for_each_entry(count), most_allocations());
}

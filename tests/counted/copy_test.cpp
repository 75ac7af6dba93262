// Allocations of a deep copy, for each entry of a large tree.
#include "tests/counted/counted.h"
#include "tests/support/fixture.h"

#include "qrv/containers/cmapobj.h"

using namespace counted;

class CountedCopy : public QrvTest {};

TEST_F(CountedCopy, an_entry_takes_few_allocations) {
    objref const tree = read(data().attr);
    objref copy;
    auto const count = allocations_of([&] {
        copy = tree->clone();
        EXPECT_TRUE(cat::detach(copy, true));
    });
    EXPECT_GE(count, in_pool() ? 1 : data().entries);
    EXPECT_LE(for_each_entry(count), most_allocations());
}

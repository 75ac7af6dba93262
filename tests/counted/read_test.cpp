// Allocations of reading, for each entry of a large tree.
#include "tests/counted/counted.h"
#include "tests/support/fixture.h"

using namespace counted;

class CountedRead : public QrvTest {};

TEST_F(CountedRead, an_entry_takes_few_allocations) {
    objref tree = read(data().attr); // what the first reading of a process creates is there now
    tree = nullptr;
    auto const count = allocations_of([&] { tree = read(data().attr); });
    EXPECT_GE(count, in_pool() ? 1 : data().entries); // else they are not counted here
    EXPECT_LE(for_each_entry(count), most_allocations());
}

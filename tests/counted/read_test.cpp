// The number of allocations per entry when a large tree is read.
#include "tests/counted/counted.h"
#include "tests/support/fixture.h"

using namespace counted;

class CountedRead : public QrvTest {};

TEST_F(CountedRead, an_entry_needs_few_allocations) {
    objref tree =
        read(data().attr); // the objects that the first read of a process creates exist now
    tree = nullptr;
    auto const count = allocations_of([&] { tree = read(data().attr); });
    EXPECT_GE(count, in_pool() ? 1 : data().entries); // else the allocations are not counted
    EXPECT_LE(for_each_entry(count), most_allocations());
}

// An entry that is not plain has its own cost, but does not add to the cost of each entry after it:
// a table of all paths would need more than one allocation for each.
TEST_F(CountedRead, an_entry_needs_as_few_after_one_that_is_not_plain) {
    std::string const &text = data().attr;
    std::string const entries = text.substr(text.find('{') + 1);
    for (char const *first : {"zz=vector[1];", "zz={x=1}; zy=#cRef(/zz);", "zz=1; zz=2;",
                              "zz=[1;#badfind;3];", "0.5=1;", "{zz=1};"}) {
        std::string const whole = std::string("{") + first + entries;
        objref tree = read(whole);
        auto const count = allocations_of([&] { tree = read(whole); });
        EXPECT_LE(for_each_entry(count), most_allocations()) << first;
    }
}

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

// What is not a plain entry costs something by itself, not in each entry after it: a table of all
// paths would take more than an allocation for each.
TEST_F(CountedRead, an_entry_takes_as_few_after_one_that_is_not_plain) {
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

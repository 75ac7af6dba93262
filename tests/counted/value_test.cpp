// The allocations of the layer of qrv::value: reading and iterating allocate nothing. Building a
// tree from the innermost level searches for no cycles; a search allocates for each entry.

#include "qrv/value.h"
#include "tests/counted/counted.h"

#include <gtest/gtest.h>

namespace {

qrv::value device() {
    objref result;
    EXPECT_EQ(
        cObj::readobj("{limits= {temperature= {low= -40.0; high= 85.0}; a_long_name_of_a_key= 1};"
                      " phases= [1, 2, 3]; name= rack}",
                      result),
        0);
    return result;
}

} // namespace

TEST(CountedValue, reading_at_a_path_allocates_nothing) {
    qrv::value const v = device();
    double sum = 0;
    EXPECT_EQ(counted::allocations_of([&] {
                  sum += v.get<double>("limits/temperature/high").value();
                  sum += v.get_or("limits/a_long_name_of_a_key", 0);
                  sum += v.get<int>("phases/2").value();
                  sum += v["phases"][1] == 2 ? 1 : 0;
                  sum += v.contains("nothing") ? 1 : 0;
              }),
              0U);
    EXPECT_EQ(sum, 90);
}

TEST(CountedValue, iterating_allocates_nothing) {
    qrv::value const v = device();
    int count = 0;
    auto const walk = [&] {
        for (auto const &[key, item] : v.items()) count += key == item ? 0 : 1;
        for (qrv::value const &phase : v.at("phases")) count += phase == 2 ? 1 : 0;
        for (auto const &[key, item] : v.at("limits").items()) count += item == 1 ? 1 : 0;
    };
    walk(); // creates the missing objects of keys
    EXPECT_EQ(counted::allocations_of(walk), 0U);
    EXPECT_EQ(count, 10);
}

namespace {

unsigned long long allocations_of_levels(int levels) {
    return counted::allocations_of([&] {
        qrv::value inner = qrv::map{{"x", 1}};
        for (int i = 0; i < levels; ++i) {
            qrv::map const outer{{"inner", inner}};
            inner = outer;
        }
    });
}

} // namespace

TEST(CountedValue, building_from_the_innermost_level_is_linear) {
    allocations_of_levels(1'000);
    auto const few = allocations_of_levels(1'000);
    EXPECT_GT(few, 0U);
    EXPECT_LE(allocations_of_levels(10'000), few * 11);
}

// The slots of a probe, and when a table grows or is rebuilt.

#include "core/ctable_growth.h"

#include <gtest/gtest.h>

#include <set>
#include <vector>

namespace {

std::vector<std::uint32_t> probed(cProbeSlots at, std::uint32_t count) {
    std::vector<std::uint32_t> slots;
    for (std::uint32_t i = 0; i < count; ++i, at.next()) slots.push_back(at.slot());
    return slots;
}

} // namespace

TEST(TableGrowth, a_probe_begins_at_the_hash_and_steps_by_the_hash) {
    EXPECT_EQ(probed({100, 97}, 4), (std::vector<std::uint32_t>{3, 9, 15, 21}));
    EXPECT_EQ(probed({94, 97}, 3), (std::vector<std::uint32_t>{94, 92, 90}));
}

TEST(TableGrowth, a_probe_reaches_every_slot_once) {
    for (std::uint32_t const hash : {0u, 1u, 96u, 97u, 12345u, 0xFFFFFFFFu}) {
        std::vector<std::uint32_t> const slots = probed({hash, 97}, 97);
        EXPECT_EQ(std::set<std::uint32_t>(slots.begin(), slots.end()).size(), 97u) << hash;
    }
}

TEST(TableGrowth, a_probe_of_the_largest_table_does_not_overflow) {
    EXPECT_EQ(probed(
                  {
                      4294967290u,
                      4294967291u,
                  },
                  2),
              (std::vector<std::uint32_t>{4294967290u, 1u}));
}

TEST(TableGrowth, a_search_may_start_from_the_remainders) {
    EXPECT_EQ(probed({100 % 97, 100 % 95, 97}, 50), probed({100, 97}, 50));
}

TEST(TableGrowth, seventy_eight_entries_are_too_many_for_97_slots) {
    EXPECT_FALSE(is_too_full(77, 97));
    EXPECT_TRUE(is_too_full(78, 97));
}

TEST(TableGrowth, fewer_than_an_eighth_of_unused_slots_is_too_few) {
    EXPECT_FALSE(is_worn(12, 97));
    EXPECT_TRUE(is_worn(11, 97));
}

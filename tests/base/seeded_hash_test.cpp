// The seeded hash: within a process, equal bytes have the same hash. Bytes of another length, or
// with one other bit, have a different one.

#include "base/seeded_hash.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

TEST(SeededHash, is_the_same_for_the_same_bytes_within_a_process) {
    std::string const text = "the same bytes at another address", copy = text.substr(0);
    EXPECT_EQ(seeded_hash_bytes(text.data(), text.size()),
              seeded_hash_bytes(copy.data(), copy.size()));
}

TEST(SeededHash, distinguishes_lengths_and_single_bits) {
    std::set<std::uint32_t> seen;
    std::string text(64, '\0');
    for (size_t length = 0; length <= 64; ++length)
        seen.insert(seeded_hash_bytes(text.data(), length));
    EXPECT_EQ(seen.size(), 65u);
    for (size_t bit = 0; bit < 512; ++bit) {
        text[bit / 8] = static_cast<char>(1 << bit % 8);
        seen.insert(seeded_hash_bytes(text.data(), 64));
        text[bit / 8] = 0;
    }
    EXPECT_EQ(seen.size(), 65u + 512);
}

TEST(SeededHash, factors_are_odd_and_differ_by_name) {
    EXPECT_EQ(seeded_factor("one"), seeded_factor("one"));
    EXPECT_NE(seeded_factor("one"), seeded_factor("other"));
    EXPECT_NE(seeded_factor("one") >> 32, seeded_factor("one") & 0xFFFFFFFF);
    for (char const *name : {"one", "other", "a", "index"}) EXPECT_EQ(seeded_factor(name) % 2, 1u);
}

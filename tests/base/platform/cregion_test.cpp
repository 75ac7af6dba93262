// Regions of blocks: the addresses of blocks, and when memory is returned to the system.

#include "base/platform/cregion.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <random>
#include <sys/mman.h>
#include <vector>

namespace {

using namespace cat::pool;

constexpr std::size_t region_size = 2 * 1024 * 1024;
constexpr std::size_t blocks_of_a_region = region_size / block_size;

std::uintptr_t region_of(void const *block) {
    return reinterpret_cast<std::uintptr_t>(block) / region_size;
}

// The system refuses to report the pages of memory that was returned.
bool is_mapped(void *block) {
    unsigned char page = 0;
    return ::mincore(block, 1, &page) == 0;
}

std::vector<void *> take_all(std::size_t count) {
    std::vector<void *> blocks(count);
    for (void *&block : blocks) block = std::memset(take_block(), 0xA5, block_room);
    return blocks;
}

void give_all(std::vector<void *> const &blocks) {
    for (void *const block : blocks) give_block(block);
}

// Fills the first region during each test, so that the blocks of the test are in other regions.
class Region : public testing::Test {
  protected:
    void SetUp() override {
        first_ = {take_block()};
        do first_.push_back(take_block());
        while (region_of(first_.back()) == region_of(first_.front()));
        give_block(first_.back());
        first_.pop_back();
        give_all(take_all(2 * blocks_of_a_region)); // no empty region is kept
        // A region that is mapped soon after another was returned is kept when it is empty. Taking
        // and freeing many blocks ends that time.
        for (void *&block : first_) {
            give_block(block);
            block = take_block();
        }
    }
    void TearDown() override { give_all(first_); }

    std::vector<void *> first_;
};

TEST_F(Region, blocks_are_aligned_and_do_not_overlap) {
    std::vector<void *> blocks = take_all(3 * blocks_of_a_region);
    std::ranges::sort(blocks);
    for (void *const block : blocks)
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(block) % block_size, 0u);
    EXPECT_EQ(std::ranges::adjacent_find(blocks), blocks.end());
    give_all(blocks);
}

TEST_F(Region, free_blocks_are_taken_before_a_region_is_begun) {
    std::vector<void *> blocks = take_all(2 * blocks_of_a_region);
    for (std::size_t i = 0; i < blocks.size(); i += 2) give_block(blocks[i]);
    std::vector<void *> again(blocks.size() / 2), given;
    for (void *&block : again) block = take_block();
    for (std::size_t i = 0; i < blocks.size(); i += 2) given.push_back(blocks[i]);
    std::ranges::sort(given);
    std::ranges::sort(again);
    EXPECT_EQ(again, given);
    give_all(blocks);
}

TEST_F(Region, an_empty_region_is_returned) {
    std::vector<void *> const blocks = take_all(blocks_of_a_region);
    for (void *const block : blocks) {
        EXPECT_TRUE(is_mapped(blocks.back()));
        give_block(block);
    }
    for (void *const block : blocks) EXPECT_FALSE(is_mapped(block));
}

TEST_F(Region, blocks_may_be_freed_in_any_order) {
    std::mt19937 random(1);
    for (int round = 0; round < 10; ++round) {
        std::vector<void *> blocks = take_all(5 * blocks_of_a_region);
        std::ranges::shuffle(blocks, random);
        give_all(blocks);
        EXPECT_EQ(std::ranges::count_if(blocks, is_mapped), 0) << round;
    }
}

TEST_F(Region, a_block_freed_and_taken_repeatedly_keeps_its_region) {
    give_block(take_block()); // returns the region
    void *const block = take_block();
    give_block(block);
    for (int i = 0; i < 1000; ++i) {
        EXPECT_TRUE(is_mapped(block));
        ASSERT_EQ(take_block(), block);
        give_block(block);
    }
    give_all(take_all(2 * blocks_of_a_region)); // until two regions are empty
    EXPECT_FALSE(is_mapped(block));
}

TEST_F(Region, the_first_region_stays_but_most_of_its_pages_are_returned) {
    for (void *const block : first_) std::memset(block, 0xA5, block_room);
    give_all(first_);
    std::size_t resident = 0;
    for (void *const block : first_) {
        unsigned char page = 0;
        ASSERT_EQ(::mincore(block, 1, &page), 0);
        resident += page & 1U;
    }
    EXPECT_EQ(resident, 4u);
    for (void *&block : first_) block = take_block();
    EXPECT_EQ(region_of(first_.back()), region_of(first_.front()));
}

} // namespace

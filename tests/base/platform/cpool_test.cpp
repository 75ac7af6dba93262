// The pool of small cells: sizes around the limits, alignment, and that blocks are returned to the
// system.

#include "base/platform/cpool.h"

#include "tests/support/sanitized.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <new>
#include <random>
#include <sys/resource.h>
#include <vector>

namespace {

using namespace cat::pool;

constexpr std::size_t cells_of_a_block =
    64 * 1024 / largest_cell; // the most cells of the largest size that a block can have
constexpr std::size_t cells_of_a_region = 32 * cells_of_a_block;

std::uintptr_t block_of(void const *cell) {
    return reinterpret_cast<std::uintptr_t>(cell) / (64 * 1024);
}

std::vector<void *> take_all(std::size_t count, std::size_t size) {
    std::vector<void *> cells(count);
    for (void *&cell : cells) cell = std::memset(take(size), 0xA5, size);
    return cells;
}

void give_all(std::vector<void *> const &cells, std::size_t size) {
    for (void *const cell : cells) give(cell, size);
}

// Holds one cell of the largest size during the test, so that one block of that size always
// remains.
class Pool : public testing::Test {
  protected:
    void TearDown() override {
        EXPECT_EQ(blocks(), before_);
        give(held_, largest_cell);
    }

    void *const held_ = take(largest_cell);
    std::size_t const before_ = blocks();
};

TEST_F(Pool, the_size_of_a_cell_is_rounded_up_to_a_multiple_of_8) {
    for (std::size_t const size : {1u, 7u, 8u, 9u, 15u, 16u, 17u, 248u, 249u, 255u, 256u}) {
        void *const cell = take(size);
        std::size_t const whole = (size + 7) / 8 * 8;
        EXPECT_EQ(size_of(cell), whole) << size;
        std::memset(cell, 0xFF, whole);
        give(cell, size);
    }
}

TEST_F(Pool, cells_of_a_multiple_of_16_are_aligned_to_16_and_others_to_8) {
    for (std::size_t size = 8; size <= largest_cell; size += 8) {
        std::vector<void *> const cells = take_all(3, size);
        for (void *const cell : cells)
            EXPECT_EQ(reinterpret_cast<std::uintptr_t>(cell) % (size % 16 == 0 ? 16 : 8), 0u);
        give_all(cells, size);
    }
}

TEST_F(Pool, the_cell_freed_last_is_reused_first) {
    void *const a = take(largest_cell), *const b = take(largest_cell);
    give(a, largest_cell);
    give(b, largest_cell);
    EXPECT_EQ(take(largest_cell), b);
    EXPECT_EQ(take(largest_cell), a);
    give(a, largest_cell);
    give(b, largest_cell);
}

TEST_F(Pool, cells_do_not_overlap) {
    std::vector<void *> const cells = take_all(3 * cells_of_a_block, largest_cell);
    std::vector<void *> sorted = cells;
    std::ranges::sort(sorted);
    for (std::size_t i = 1; i < sorted.size(); ++i)
        EXPECT_GE(reinterpret_cast<std::uintptr_t>(sorted[i]),
                  reinterpret_cast<std::uintptr_t>(sorted[i - 1]) + largest_cell);
    for (void *const cell : cells) EXPECT_EQ(*static_cast<unsigned char *>(cell), 0xA5);
    give_all(cells, largest_cell);
}

TEST_F(Pool, a_new_block_is_mapped_when_the_first_is_full) {
    std::vector<void *> cells = {take(largest_cell)};
    while (block_of(cells.back()) == block_of(held_)) cells.push_back(take(largest_cell));
    // In the first block the header uses the space of one cell, and one cell is held. The last of
    // `cells` is in the new block.
    EXPECT_EQ(cells.size(), cells_of_a_block - 1);
    EXPECT_EQ(blocks(), before_ + 1);
    give_all(cells, largest_cell);
}

TEST_F(Pool, free_cells_of_a_full_block_are_reused_before_a_block_is_mapped) {
    std::vector<void *> cells = take_all(4 * cells_of_a_block, largest_cell);
    std::size_t const most = blocks();
    for (std::size_t i = 0; i < cells.size(); i += 2) give(cells[i], largest_cell);
    for (std::size_t i = 0; i < cells.size(); i += 2) cells[i] = take(largest_cell);
    EXPECT_EQ(blocks(), most);
    give_all(cells, largest_cell);
}

TEST_F(Pool, blocks_are_returned_in_order) {
    give_all(take_all(10 * cells_of_a_block, largest_cell), largest_cell);
}

TEST_F(Pool, blocks_are_returned_in_reverse) {
    std::vector<void *> cells = take_all(10 * cells_of_a_block, largest_cell);
    EXPECT_GT(blocks(), before_ + 8);
    std::ranges::reverse(cells);
    give_all(cells, largest_cell);
}

TEST_F(Pool, blocks_are_returned_in_any_order_with_new_cells_in_between) {
    std::mt19937 random(1);
    for (int round = 0; round < 20; ++round) {
        std::vector<void *> cells = take_all(10 * cells_of_a_block, largest_cell);
        std::ranges::shuffle(cells, random);
        for (std::size_t i = cells.size() / 2; i < cells.size(); ++i) give(cells[i], largest_cell);
        cells.resize(cells.size() / 2);
        std::vector<void *> const more = take_all(3 * cells_of_a_block, largest_cell);
        cells.insert(cells.end(), more.begin(), more.end());
        std::ranges::shuffle(cells, random);
        give_all(cells, largest_cell);
        ASSERT_EQ(blocks(), before_) << round;
    }
}

// Prevents the process from mapping more memory until the end of the scope.
class cNoMoreMemory {
  public:
    cNoMoreMemory() {
        getrlimit(RLIMIT_AS, &before_);
        rlimit const nothing{1, before_.rlim_max};
        setrlimit(RLIMIT_AS, &nothing);
    }
    ~cNoMoreMemory() { setrlimit(RLIMIT_AS, &before_); }
    cNoMoreMemory(cNoMoreMemory const &) = delete;
    cNoMoreMemory &operator=(cNoMoreMemory const &) = delete;

  private:
    rlimit before_{};
};

std::vector<void *> *cells_to_free = nullptr;

void free_cells() {
    std::set_new_handler(nullptr);
    give_all(*cells_to_free, largest_cell);
    cells_to_free->clear();
}

TEST_F(Pool, allocation_throws_without_memory_and_the_pool_stays_valid) {
    if (test::sanitized) return; // the sanitizer maps memory itself
    std::vector<void *> cells;
    cells.reserve(2 * cells_of_a_region);
    bool thrown = false;
    {
        cNoMoreMemory const limited;
        try {
            while (cells.size() < 2 * cells_of_a_region) cells.push_back(take(largest_cell));
        } catch (std::bad_alloc const &) {
            thrown = true;
        }
    }
    EXPECT_TRUE(thrown);
    cells.push_back(take(largest_cell));
    give_all(cells, largest_cell);
}

TEST_F(Pool, the_new_handler_may_free_cells) {
    if (test::sanitized) return; // the sanitizer maps memory itself
    std::vector<void *> cells = take_all(cells_of_a_region, largest_cell);
    std::size_t const most =
        blocks() + 32; // the rest of a region can be used without mapping memory
    cells.reserve(4 * cells_of_a_region);
    cells_to_free = &cells;
    std::set_new_handler(free_cells);
    void *last = nullptr;
    {
        cNoMoreMemory const limited;
        while (std::get_new_handler() && cells.size() < 4 * cells_of_a_region)
            cells.push_back(last = take(largest_cell));
    }
    EXPECT_EQ(cells, std::vector<void *>{
                         last}); // this cell was taken after the handler had freed all others
    EXPECT_LE(blocks(), most);
    give_all(cells, largest_cell);
}

TEST_F(Pool, memory_outside_the_pool_has_no_size) {
    int local = 0;
    EXPECT_EQ(size_of(&local), 0u);
    EXPECT_EQ(size_of(&before_), 0u);
}

} // namespace

#include "qrv/platform/cstack.h"

#include <gtest/gtest.h>
#include <pthread.h>

namespace {

// Touches `size` bytes of stack and tells what is left below them.
template <std::size_t size> __attribute__((noinline)) std::size_t left_below() {
    char volatile block[size];
    block[0] = 1;
    block[size - 1] = block[0];
    return cat::stack_left();
}

TEST(Stack, what_is_left_shrinks_with_every_frame) {
    std::size_t const here = cat::stack_left();
    std::size_t const deeper = left_below<100000>();
    EXPECT_GE(here, deeper + 100000);
    EXPECT_LE(here, deeper + 110000);
    EXPECT_FALSE(cat::stack_low());
}

struct cSeen {
    std::size_t left = 0;
    bool low_at_start = true;
    bool low_below_half = false;
};

__attribute__((noinline)) bool low_below_200k() {
    char volatile block[200 * 1024];
    block[0] = 1;
    block[sizeof block - 1] = block[0];
    return cat::stack_low();
}

void *look(void *argument) {
    auto *const seen = static_cast<cSeen *>(argument);
    seen->left = cat::stack_left();
    seen->low_at_start = cat::stack_low();
    seen->low_below_half = low_below_200k();
    return nullptr;
}

TEST(Stack, each_thread_has_bounds_of_its_own_and_keeps_half_of_a_small_stack) {
    pthread_attr_t attributes;
    ASSERT_EQ(pthread_attr_init(&attributes), 0);
    ASSERT_EQ(pthread_attr_setstacksize(&attributes, 384 * 1024), 0);
    cSeen seen;
    pthread_t thread;
    ASSERT_EQ(pthread_create(&thread, &attributes, look, &seen), 0);
    ASSERT_EQ(pthread_join(thread, nullptr), 0);
    pthread_attr_destroy(&attributes);
    EXPECT_LT(seen.left, 400u * 1024u);
    EXPECT_GT(seen.left, 200u * 1024u);
    EXPECT_FALSE(seen.low_at_start);
    EXPECT_TRUE(seen.low_below_half);
}

__attribute__((noinline)) int descend(int depth) {
    char volatile block[4096];
    block[0] = static_cast<char>(depth);
    if (cat::stack_low()) return depth;
    int const reached = descend(depth + 1);
    return reached + (block[0] - static_cast<char>(depth));
}

TEST(Stack, a_recursion_that_asks_ends_in_time) { EXPECT_GT(descend(0), 100); }

} // namespace

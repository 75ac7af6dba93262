#include "qrv/base/platform/cstack.h"

#include "tests/support/os_faults.h"

#include <gtest/gtest.h>
#include <pthread.h>

namespace {

// Touches `size` bytes of stack and returns how many bytes are left below them.
template <std::size_t size> __attribute__((noinline)) std::size_t left_below() {
    char volatile block[size];
    block[0] = 1;
    block[size - 1] = block[0];
    return cat::stack_left();
}

TEST(Stack, the_stack_left_shrinks_with_every_frame) {
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

TEST(Stack, each_thread_has_its_own_bounds_and_reserves_half_of_a_small_stack) {
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

TEST(Stack, a_recursion_that_checks_the_stack_ends_in_time) { EXPECT_GT(descend(0), 100); }

// ---- the bounds ----

// Returns null if the end is not above this frame, or is too far from it.
void *store_stack_end(void *end) {
    *static_cast<void const **>(end) = cat::stack_end();
    char local = 0;
    auto const here = reinterpret_cast<std::uintptr_t>(&local);
    auto const top = reinterpret_cast<std::uintptr_t>(*static_cast<void const **>(end));
    return top > here && top - here < 16 * 1024 * 1024 ? end : nullptr;
}

TEST(Stack, each_thread_has_its_own_end_above_its_frames) {
    void const *own = nullptr;
    EXPECT_NE(store_stack_end(&own), nullptr);
    EXPECT_EQ(cat::stack_end(), own);
    void const *other = nullptr;
    pthread_t thread;
    ASSERT_EQ(pthread_create(&thread, nullptr, store_stack_end, &other), 0);
    void *above = nullptr;
    ASSERT_EQ(pthread_join(thread, &above), 0);
    EXPECT_NE(above, nullptr);
    EXPECT_NE(other, own);
}

struct cUnknownBounds {
    void const *end = nullptr;
    bool low = true;
    std::size_t left = 0;
};

void *look_at_unknown_bounds(void *argument) {
    auto *const seen = static_cast<cUnknownBounds *>(argument);
    seen->end = cat::stack_end();
    seen->low = cat::stack_low();
    seen->left = cat::stack_left();
    return nullptr;
}

// The end without bounds is up to a page lower, since the system's bounds are rounded up.
TEST(Stack,
     without_bounds_from_the_system_no_recursion_is_stopped_and_the_main_threads_end_is_used) {
    cUnknownBounds seen;
    {
        cOsFaults const faults(0, ENOMEM);
        pthread_t thread;
        ASSERT_EQ(pthread_create(&thread, nullptr, look_at_unknown_bounds, &seen), 0);
        ASSERT_EQ(pthread_join(thread, nullptr), 0);
        EXPECT_EQ(cOsFaults::hit(), "stack");
        EXPECT_EQ(cOsFaults::calls(), 1);
    }
    EXPECT_FALSE(seen.low);
    EXPECT_GT(seen.left, cat::stack_reserve);
    auto const end = reinterpret_cast<std::uintptr_t>(seen.end);
    auto const real = reinterpret_cast<std::uintptr_t>(cat::stack_end());
    int local = 0;
    EXPECT_GT(end, reinterpret_cast<std::uintptr_t>(&local));
    EXPECT_LE(end, real);
    EXPECT_LE(real - end, 4096u);
}

} // namespace

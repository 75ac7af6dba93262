#include "qrv/util/cutil.h"

#include "qrv/cvers.h"
#include "util/cutil_state.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <type_traits>

namespace {

int static_number = 0;
constexpr int constant = 1;
thread_local int thread_number = 0;

std::uintptr_t number(void const *address) { return reinterpret_cast<std::uintptr_t>(address); }

// ---- cIsOnStack ----

TEST(IsOnStackEdge, a_local_is_on_the_stack_and_a_static_is_not) {
    int local = 0;
    static int of_function = 0;
    EXPECT_TRUE(cIsOnStack(&local));
    EXPECT_FALSE(cIsOnStack(&static_number));
    EXPECT_FALSE(cIsOnStack(&of_function));
}

TEST(IsOnStack, allocated_memory_is_not_on_the_stack) {
    auto const small = std::make_unique<int>(1);
    std::string const large(1'000'000,
                            'x'); // the system maps separate pages for a block of this size
    EXPECT_FALSE(cIsOnStack(small.get()));
    EXPECT_FALSE(cIsOnStack(large.data()));
    EXPECT_TRUE(cIsOnStack(&small));
    EXPECT_TRUE(cIsOnStack(&large));
}

TEST(IsOnStack, constants_code_null_and_thread_local_variables_are_not_on_the_stack) {
    EXPECT_FALSE(cIsOnStack(&constant));
    EXPECT_FALSE(cIsOnStack("text"));
    EXPECT_FALSE(cIsOnStack(reinterpret_cast<void const *>(&cIsOnStack)));
    EXPECT_FALSE(cIsOnStack(&thread_number));
    EXPECT_FALSE(cIsOnStack(nullptr));
}

__attribute__((noinline)) int locals_seen(int depth, void const *outermost) {
    std::array<char, 512> volatile frame{};
    void const *const local = const_cast<std::array<char, 512> const *>(&frame);
    int const seen = cIsOnStack(local) && cIsOnStack(outermost) ? 1 : 0;
    return depth == 0 ? seen : seen + locals_seen(depth - 1, outermost);
}

TEST(IsOnStack, the_locals_of_a_thousand_frames_are_on_the_stack) {
    int local = 0;
    EXPECT_EQ(locals_seen(999, &local), 1000);
}

__attribute__((noinline)) void const *address_of_a_frame() {
    void const *const address = cGetStackAddress();
    return address;
}

TEST(IsOnStack, a_finished_frame_is_not_on_the_stack) {
    // Recurses so deeply that its frames are far from the address that is asked about.
    struct cDeep {
        __attribute__((noinline)) static void const *frame(int depth) {
            char volatile block[1024];
            block[0] = 1;
            void const *const address = depth ? frame(depth - 1) : address_of_a_frame();
            block[1] = block[0];
            return address;
        }
    };
    EXPECT_FALSE(cIsOnStack(cDeep::frame(20)));
}

TEST(IsOnStack, the_base_is_on_the_stack_but_addresses_beyond_it_are_not) {
    auto const *const base = static_cast<char const *>(cGetStackBase());
    EXPECT_TRUE(cIsOnStack(base));
    EXPECT_TRUE(cIsOnStack(base - 1));
    EXPECT_FALSE(cIsOnStack(reinterpret_cast<void const *>(number(base) + 1)));
}

TEST(IsOnStack, the_base_is_constant_and_above_every_local) {
    int local = 0;
    void const *const base = cGetStackBase();
    EXPECT_EQ(cGetStackBase(), base);
    EXPECT_GT(number(base), number(&local));
    EXPECT_EQ(number(base) % 4096, 0u) << "the base is the end of a page";
}

TEST(IsOnStack, the_stack_address_is_below_the_callers_locals) {
    int local = 0;
    void const *const here = cGetStackAddress();
    ASSERT_NE(here, nullptr);
    EXPECT_LT(number(here), number(&local));
    EXPECT_LT(number(&local) - number(here), 64u * 1024u);
}

TEST(IsOnStack, deeper_frames_have_lower_stack_addresses) {
    void const *const here = cGetStackAddress();
    EXPECT_LT(number(address_of_a_frame()), number(here));
}

// ---- stack_holds, for both directions of growth ----

TEST(StackRule, a_stack_growing_downwards_excludes_the_current_address_and_includes_the_base) {
    EXPECT_FALSE(cat::stack_holds(99, 100, 200));
    EXPECT_FALSE(cat::stack_holds(100, 100, 200));
    EXPECT_TRUE(cat::stack_holds(101, 100, 200));
    EXPECT_TRUE(cat::stack_holds(199, 100, 200));
    EXPECT_TRUE(cat::stack_holds(200, 100, 200));
    EXPECT_FALSE(cat::stack_holds(201, 100, 200));
}

TEST(StackRule, a_stack_growing_upwards_excludes_the_current_address_and_includes_the_base) {
    EXPECT_FALSE(cat::stack_holds(99, 200, 100));
    EXPECT_TRUE(cat::stack_holds(100, 200, 100));
    EXPECT_TRUE(cat::stack_holds(101, 200, 100));
    EXPECT_TRUE(cat::stack_holds(199, 200, 100));
    EXPECT_FALSE(cat::stack_holds(200, 200, 100));
    EXPECT_FALSE(cat::stack_holds(201, 200, 100));
}

TEST(StackRule, a_stack_whose_base_is_the_current_address_is_empty) {
    for (std::uintptr_t p : {99u, 100u, 101u}) EXPECT_FALSE(cat::stack_holds(p, 100, 100));
}

TEST(StackRule, addresses_are_compared_as_unsigned_numbers) {
    constexpr std::uintptr_t top = UINTPTR_MAX;
    EXPECT_TRUE(cat::stack_holds(top, 1, top));
    EXPECT_TRUE(cat::stack_holds(top / 2 + 1, 1, top));
    EXPECT_FALSE(cat::stack_holds(0, 1, top));
}

// ---- the version ----

TEST(VersionText, contains_product_version_and_makers) {
    static_assert(std::is_same_v<decltype(cversionstring()), char *>);
    EXPECT_STREQ(cversionstring(), "Quorvanta v" QRV_VERSION "\nby the Quorvanta developers");
}

TEST(VersionText, is_one_static_string) {
    EXPECT_EQ(cversionstring(), cversionstring());
    EXPECT_FALSE(cIsOnStack(cversionstring()));
}

TEST(VersionText, is_in_writable_memory) {
    std::string const before = cversionstring();
    cversionstring()[0] = 'q';
    EXPECT_EQ(cversionstring(), "q" + before.substr(1));
    cversionstring()[0] = before[0];
    EXPECT_EQ(cversionstring(), before);
}

} // namespace

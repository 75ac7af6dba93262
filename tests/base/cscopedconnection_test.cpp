// Connections that end with their scope.
#include "qrv/base/cscopedconnection.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <type_traits>
#include <vector>

static_assert(!std::is_copy_constructible_v<cScopedConnection>);
static_assert(std::is_nothrow_move_constructible_v<cScopedConnection>);

TEST(ScopedConnection, calls_until_its_scope_ends) {
    cSignal const signal;
    int calls = 0;
    {
        cScopedConnection const seen(signal, [&calls] { ++calls; });
        EXPECT_TRUE(seen.isconnected());
        signal();
    }
    signal();
    EXPECT_EQ(calls, 1);
    EXPECT_FALSE(signal.isconnected());
}

TEST(ScopedConnection, passes_the_arguments_that_the_function_takes) {
    cSignal1<int> const one;
    cSignal2<int, std::string const &> const two;
    std::string log;
    cScopedConnection const a(one, [&log](int i) { log += "a" + std::to_string(i) + " "; });
    cScopedConnection const b(one, [&log] { log += "b "; });
    cScopedConnection const c(two, [&log](int i, std::string const &text) {
        log += "c" + std::to_string(i) + text + " ";
    });
    cScopedConnection const d(two, [&log](int i) { log += "d" + std::to_string(i) + " "; });
    cScopedConnection const e(two, [&log] { log += "e "; });
    one(1);
    two(2, "x");
    EXPECT_EQ(log, "a1 b c2x d2 e ");
}

TEST(ScopedConnection, moves) {
    cSignal const signal;
    int calls = 0, others = 0;
    cScopedConnection seen(signal, [&calls] { ++calls; });
    std::vector<cScopedConnection> kept;
    kept.push_back(std::move(seen));
    signal();
    kept[0] = cScopedConnection(signal, [&others] { ++others; });
    signal();
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(others, 1);
    kept.clear();
    signal();
    EXPECT_EQ(others, 1);
}

TEST(ScopedConnection, is_safe_when_the_signal_ends_first) {
    auto signal = std::make_optional<cSignal1<int>>();
    cScopedConnection seen(*signal, [](int) {});
    signal.reset();
    EXPECT_FALSE(seen.isconnected());
    seen.disconnect();
    EXPECT_EQ(seen.block(), nullptr);
}

TEST(ScopedConnection, may_end_inside_its_own_call) {
    cSignal1<int> const signal;
    std::optional<cScopedConnection> seen;
    std::string log;
    std::string const captured(100, 'c');
    auto const act = [&seen, &log, captured](int i) {
        seen.reset();
        log += captured + std::to_string(i); // the captured string still exists
    };
    seen.emplace(signal, act);
    signal(1);
    signal(2);
    EXPECT_EQ(log, captured + "1");
}

TEST(ScopedConnection, may_see_its_signal_end_inside_its_call) {
    auto signal = std::make_unique<cSignal>();
    int calls = 0;
    cScopedConnection const seen(*signal, [&] {
        signal.reset();
        ++calls;
    });
    (*signal)();
    EXPECT_EQ(calls, 1);
    EXPECT_FALSE(seen.isconnected());
}

TEST(ScopedConnection, is_blocked_by_a_token) {
    cSignal const signal;
    int calls = 0;
    cScopedConnection const seen(signal, [&calls] { ++calls; });
    {
        auto const token = seen.block();
        signal();
    }
    signal();
    EXPECT_EQ(calls, 1);
}

TEST(ScopedConnection, a_default_object_is_not_connected) {
    cScopedConnection none;
    EXPECT_FALSE(none.isconnected());
    none.disconnect();
    EXPECT_EQ(none.block(), nullptr);
}

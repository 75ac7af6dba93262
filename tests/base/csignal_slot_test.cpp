// What slots accept: member functions of every form, one or two arguments, and function objects.

#include "qrv/base/csignal.h"
#include "qrv/util/cwatchdog.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <type_traits>
#include <utility>

namespace {

std::string calls; // the calls, in order

std::string taken() { return std::exchange(calls, std::string()); }

// Member functions of every form, some inherited.
struct Counter {
    int count = 0;
    int add() { return ++count; }
    int read() const {
        calls += "read(" + std::to_string(count) + ");";
        return count;
    }
    void never() noexcept { calls += "never;"; }
    bool at_least(int n) const {
        calls += count >= n ? "yes;" : "no;";
        return count >= n;
    }
    double both(int a, int b) const {
        calls += "both(" + std::to_string(a) + "," + std::to_string(b) + ");";
        return a + b;
    }
    void change_both(int a, int b) { count += a * b; }
    virtual int kind() const {
        calls += "base;";
        return 0;
    }
    virtual ~Counter() = default;
};
struct Other {
    virtual ~Other() = default;
    int number = 0;
};
struct Derived : Other, Counter {
    int kind() const override {
        calls += "derived;";
        return 1;
    }
};

TEST(Slot, a_slot_accepts_const_members_and_objects_and_members_with_a_result) {
    Counter counter;
    Counter const &fixed = counter;
    cSlot<Counter> const adds(&counter, &Counter::add);
    cSlot<Counter> const reads(&counter, &Counter::read);
    cSlot<Counter const> const reads_fixed(&fixed, &Counter::read);
    cSlot<Counter> const never(&counter, &Counter::never);
    cSlot1<Counter, int> const asks(&counter, &Counter::at_least);
    cSlot1<Counter const, int> const asks_fixed(&fixed, &Counter::at_least);
    adds();
    reads();
    reads_fixed();
    never();
    asks(1);
    asks_fixed(2);
    EXPECT_EQ(taken(), "read(1);read(1);never;yes;no;");
    static_assert(
        !std::is_constructible_v<cSlot<Counter const>, Counter const *, int (Counter::*)()>);
    static_assert(
        !std::is_constructible_v<cSlot<Counter>, Counter *, bool (Counter::*)(int) const>);
}

TEST(Slot, a_slot_accepts_inherited_and_virtual_members) {
    Derived derived;
    cSlot<Derived> const adds(&derived, &Counter::add);
    cSlot<Derived> const reads(&derived, &Counter::read);
    cSlot<Counter> const asks(&derived, &Counter::kind);
    cSlot<Counter> const copy(asks);
    adds();
    reads();
    copy();
    EXPECT_EQ(taken(), "read(1);derived;");
}

TEST(Slot, a_slot_with_a_result_or_a_const_member_is_connected_by_its_constructor) {
    Counter counter;
    Counter const &fixed = counter;
    cSignal const none;
    cSignal1<int> const one;
    cSlot<Counter> const adds(&counter, &Counter::add, none);
    cSlot<Counter const> const reads(&fixed, &Counter::read, one);
    cSlot1<Counter const, int> const asks(&fixed, &Counter::at_least, one);
    none();
    one(2);
    EXPECT_EQ(taken(), "read(1);no;");
}

TEST(Slot, null_members_of_every_form_are_not_called) {
    Counter counter;
    int (Counter::*const with_result)() = nullptr;
    int (Counter::*const fixed)() const = nullptr;
    cSlot<Counter> const a(&counter, nullptr), b(&counter, with_result), c(&counter, fixed);
    cSlot<Counter const> const d(nullptr, &Counter::read), e(nullptr, nullptr);
    a();
    b();
    c();
    d();
    e();
    EXPECT_EQ(taken(), "");
}

TEST(Slot, slots_may_have_two_arguments) {
    Counter counter;
    cSignal2<int, int> const two;
    cSlot2<Counter, int, int> const changes(&counter, &Counter::change_both, two);
    cSlot2<Counter const, int, int> const both(&counter, &Counter::both, two);
    cFunctionSlot2<int, int, void (*)(int, int)> const plain(
        [](int a, int b) { calls += "f(" + std::to_string(a) + "," + std::to_string(b) + ");"; },
        two);
    int sum = 0;
    auto const add = [&sum](int a, int b) { return sum += a + b; };
    cFunctionSlot2<int, int, decltype(add)> const adds(add, two);
    two(3, 4);
    EXPECT_EQ(taken(), "both(3,4);f(3,4);");
    EXPECT_EQ(counter.count, 12);
    EXPECT_EQ(sum, 7);
    cFunctionSlot2<int, int, void (*)(int, int)> const none(nullptr);
    cSlot2<Counter, int, int> const nobody(nullptr, &Counter::change_both);
    none(1, 2);
    nobody(1, 2);
    static_assert(std::is_base_of_v<cSSBase2<int, int>, decltype(changes)>);
}

TEST(Slot, the_start_signal_of_a_program_calls_slots_of_two_arguments) {
    Counter counter;
    cSlot2<Counter, int, int> const changes(&counter, &Counter::change_both, sig_proginit);
    cFunctionSlot2 const notes([](int a, int b) { calls += "int(" + std::to_string(a - b) + ");"; },
                               sig_proginit);
    sig_proginit(7, 2);
    EXPECT_EQ(counter.count, 14);
    EXPECT_EQ(taken(), "int(5);");
}

TEST(Slot, slots_of_two_arguments_are_blocked_and_copied_like_the_others) {
    cFunctionSlot2<int, int, void (*)(int, int)> slot([](int, int) { calls += "f;"; });
    cSignal2<int, int> const two;
    two.connect(slot);
    decltype(slot) const copy(slot);
    EXPECT_FALSE(copy.isconnected());
    copy(1, 2);
    {
        auto const held = slot.block();
        two(1, 2);
    }
    two(1, 2);
    EXPECT_EQ(taken(), "f;f;");
    Counter counter;
    cSlot2<Counter, int, int> const changes(&counter, &Counter::change_both);
    auto const held = changes.block();
    changes(1, 2);
    EXPECT_EQ(counter.count, 0);
}

// --- lambdas ---

TEST(FunctionSlot, a_lambda_that_captures_is_called) {
    int count = 0;
    std::string text;
    auto const plain = [&count] { ++count; };
    auto const with_text = [&text](char const *piece) { text += piece; };
    cSignal1<char const *> const signal;
    cFunctionSlot<decltype(plain)> const a(plain, signal);
    cFunctionSlot1<char const *, decltype(with_text)> const b(with_text, signal);
    cFunctionSlot const c(plain, signal); // the template argument is deduced
    cFunctionSlot1 const d(with_text, signal);
    signal("x");
    EXPECT_EQ(count, 2);
    EXPECT_EQ(text, "xx");
    cSignal2<int, int> const two;
    cFunctionSlot2 const e([&count](int p, int q) { count = p * q; }, two);
    two(5, 6);
    EXPECT_EQ(count, 30);
}

TEST(FunctionSlot, a_lambda_may_be_mutable_and_move_only) {
    int seen = 0;
    cFunctionSlot const counts([n = 0, &seen]() mutable { seen = ++n; });
    counts();
    counts();
    EXPECT_EQ(seen, 2);
    cFunctionSlot const owns([number = std::make_unique<int>(7), &seen] { seen = *number; });
    owns();
    EXPECT_EQ(seen, 7);
}

TEST(FunctionSlot, an_empty_function_object_is_not_called) {
    std::function<void()> const nothing;
    cFunctionSlot<std::function<void()>> const empty(nothing);
    empty();
    cFunctionSlot<std::function<void()>> const full([] { calls += "full;"; });
    full();
    cFunctionSlot1<int, std::function<void(int)>> const empty1(nullptr);
    empty1(1);
    EXPECT_EQ(taken(), "full;");
}

TEST(FunctionSlot, a_lambda_outlives_its_slot_until_its_call_returns) {
    std::function<void()> destroy;
    auto captured = std::make_shared<std::string>("captured");
    auto lambda = [&destroy, captured] {
        destroy();
        calls += *captured + " is there;";
    };
    auto slot = std::make_unique<cFunctionSlot<decltype(lambda)>>(std::move(lambda));
    cSignal const signal;
    signal.connect(*slot);
    destroy = [&slot] { slot.reset(); };
    signal();
    EXPECT_EQ(slot, nullptr);
    EXPECT_EQ(taken(), "captured is there;");
    EXPECT_EQ(captured.use_count(), 1);
}

TEST(FunctionSlot, a_copy_shares_the_lambda_but_not_the_connections) {
    int seen = 0;
    cFunctionSlot const first([n = 0, &seen]() mutable { seen = ++n; });
    cSignal const signal;
    signal.connect(first);
    auto const second = first;
    EXPECT_FALSE(second.isconnected());
    second();
    signal();
    EXPECT_EQ(seen, 2);
}

} // namespace

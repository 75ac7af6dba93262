// Typed signals and slots: which call a target receives, formatted strings, and the signal that
// fires in its destructor.

#include "qrv/base/csignal.h"

#include "tests/base/call_log.h"

#include <gtest/gtest.h>

#include <clocale>
#include <memory>
#include <stdexcept>
#include <string>
#include <type_traits>

namespace {

std::string calls; // the calls of the plain functions below

std::string taken() {
    std::string result;
    result.swap(calls);
    return result;
}

void note() { calls += "note;"; }
void note_text(char const *text) { calls += std::string("text(") + text + ");"; }
void note_int(int n) { calls += "int(" + std::to_string(n) + ");"; }
int note_with_result(int n) {
    note_int(n);
    return n;
}

struct Object {
    void plain() { calls += "plain;"; }
    void text(char const *what) { calls += std::string("object(") + what + ");"; }
    void count(int n) { calls += "count(" + std::to_string(n) + ");"; }
    void flag(bool &on) { on = !on; }
};

// A target with two arguments.
class TwoSlot : public cSSBase2<int, int> {
  public:
    TwoSlot() = default;
    TwoSlot(TwoSlot const &) = delete;
    TwoSlot &operator=(TwoSlot const &) = delete;
    ~TwoSlot() override { disconnect(); }
    void operator()(int a, int b) const override {
        calls += "two(" + std::to_string(a) + "," + std::to_string(b) + ");";
    }
};

using FunctionSlot = cFunctionSlot<void (*)()>;
using TextSlot = cFunctionSlot1<char const *, void (*)(char const *)>;
using IntSlot = cFunctionSlot1<int, void (*)(int)>;

TEST(Signal, a_slot_calls_a_member_function_directly) {
    Object object;
    cSlot<Object> const plain(&object, &Object::plain);
    cSlot1<Object, char const *> const text(&object, &Object::text);
    plain();
    text("x");
    EXPECT_EQ(taken(), "plain;object(x);");
    EXPECT_EQ(plain.begin(), nullptr);
}

TEST(Signal, slots_connect_themselves_to_a_signal_of_any_compatible_type) {
    Object object;
    cSignal const none;
    cSignal1<char const *> const text;
    cSignal2<int, int> const two;
    cSlot<Object> const a(&object, &Object::plain, none), b(&object, &Object::plain, text),
        c(&object, &Object::plain, two);
    cSlot1<Object, char const *> const d(&object, &Object::text, text);
    cSlot1<Object, int> const e(&object, &Object::count, two);
    FunctionSlot const f(&note, none);
    TextSlot const g(&note_text, text);
    none();
    EXPECT_EQ(taken(), "plain;note;");
    text("x");
    EXPECT_EQ(taken(), "plain;object(x);text(x);");
    two(1, 2);
    EXPECT_EQ(taken(), "plain;count(1);");
    EXPECT_FALSE(none.begin()->istarget()); // the signal is the sender
}

TEST(Signal, signals_connect_only_to_compatible_targets) {
    static_assert(cSignalFor<cSignal, cSSBase0>);
    static_assert(!cSignalFor<cSignal, cSSBase1<int>>);
    static_assert(cSignalFor<cSignal1<int>, cSSBase0>);
    static_assert(cSignalFor<cSignal1<int>, cSSBase1<int>>);
    static_assert(!cSignalFor<cSignal1<int>, cSSBase1<char const *>>);
    static_assert(!cSignalFor<cSignal1<int>, cSSBase2<int, int>>);
    static_assert(cSignalFor<cSignal2<int, char>, cSSBase1<int>>);
    static_assert(!cSignalFor<cSignal2<int, char>, cSSBase1<char>>);
    static_assert(cSignalFor<cSignal2<int, char>, cSSBase2<int, char>>);
    static_assert(std::is_base_of_v<cSSBase0, cSignal> &&
                  std::is_base_of_v<cSignal, cDeleteSignal>);
    static_assert(std::is_base_of_v<cSignal1<char const *>, cSigInfo>);
}

TEST(Signal, several_signals_may_call_one_slot) {
    Object object;
    cSlot1<Object, char const *> const slot(&object, &Object::text);
    cSignal1<char const *> const a, b;
    a.connect(slot);
    b.connect(slot);
    a("a");
    b("b");
    EXPECT_EQ(taken(), "object(a);object(b);");
}

TEST(Signal, a_reference_argument_is_the_same_object_in_every_target) {
    Object object;
    cSignal1<bool &> const signal;
    cSlot1<Object, bool &> const first(&object, &Object::flag, signal);
    cSlot1<Object, bool &> const second(&object, &Object::flag, signal);
    cSlot1<Object, bool &> const third(&object, &Object::flag, signal);
    bool on = false;
    signal(on);
    EXPECT_TRUE(on);
}

TEST(Signal, every_target_receives_an_intact_value_argument) {
    static std::string seen;
    seen.clear();
    cSignal1<std::string> const signal;
    auto const append = [](std::string text) { seen += text; };
    cFunctionSlot1<std::string, void (*)(std::string)> const a(append, signal), b(append, signal);
    signal("a text that is too long for the string itself;");
    EXPECT_EQ(seen, "a text that is too long for the string itself;"
                    "a text that is too long for the string itself;");
}

TEST(Signal, a_forwarding_signal_respects_its_own_blocks) {
    cSignal1<char const *> const outer, inner;
    cSignal const plain;
    outer.connect(inner);
    outer.connect(plain);
    TextSlot const text(&note_text, inner);
    FunctionSlot const function(&note, plain);
    outer("x");
    EXPECT_EQ(taken(), "text(x);note;");
    auto const hold = plain.block();
    outer("y");
    EXPECT_EQ(taken(), "text(y);");
}

TEST(Signal, a_target_of_one_or_no_argument_ignores_the_others) {
    cSignal2<int, int> const signal, forward;
    TwoSlot const two;
    IntSlot const one(&note_int);
    FunctionSlot const none(&note);
    signal.connect(two);
    signal.connect(one);
    signal.connect(none);
    signal.connect(forward);
    TwoSlot const next;
    forward.connect(next);
    signal(3, 4);
    EXPECT_EQ(taken(), "two(3,4);int(3);note;two(3,4);");
    signal.disconnect(two, true);
    signal.disconnect(one, true);
    signal.disconnect(none, false);
    signal(5, 6);
    EXPECT_EQ(taken(), "two(5,6);");
    signal.disconnect();
    signal(7, 8);
    EXPECT_EQ(taken(), "");
}

TEST(Signal, a_function_with_a_result_may_be_connected) {
    cSignal1<int> const signal;
    cFunctionSlot1<int, int (*)(int)> const slot(&note_with_result, signal);
    signal(4);
    EXPECT_EQ(taken(), "int(4);");
}

TEST(Signal, disconnecting_a_target_removes_one_use_unless_forced) {
    FunctionSlot const slot(&note);
    TextSlot const text_slot(&note_text);
    TwoSlot const two_slot;
    IntSlot const int_slot(&note_int);
    cSignal const none;
    cSignal1<char const *> const text;
    cSignal2<int, int> const two;
    for (int i = 0; i < 2; ++i) {
        none.connect(slot);
        text.connect(slot);
        text.connect(text_slot);
        two.connect(slot);
        two.connect(int_slot);
        two.connect(two_slot);
    }
    for (bool const still : {true, false}) {
        none.disconnect(slot);
        text.disconnect(slot);
        text.disconnect(text_slot);
        two.disconnect(slot);
        two.disconnect(int_slot);
        two.disconnect(two_slot);
        EXPECT_EQ(none.isconnected(slot), still);
        EXPECT_EQ(text.isconnected(slot), still);
        EXPECT_EQ(text.isconnected(text_slot), still);
        EXPECT_EQ(two.isconnected(slot), still);
        EXPECT_EQ(two.isconnected(int_slot), still);
        EXPECT_EQ(two.isconnected(two_slot), still);
    }
}

TEST(Signal, null_functions_are_not_called) {
    Object object;
    cSignal1<char const *> const signal;
    FunctionSlot const a(nullptr, signal);
    TextSlot const b(nullptr, signal);
    cSlot<Object> const c(&object, nullptr, signal);
    cSlot1<Object, char const *> const d(&object, nullptr, signal);
    signal("x");
    EXPECT_EQ(taken(), "");
}

TEST(Signal, a_copied_slot_keeps_its_target_but_no_connection) {
    Object object;
    cSignal const signal;
    cSlot<Object> slot(&object, &Object::plain, signal);
    cSlot<Object> const copy(slot);
    EXPECT_FALSE(copy.isconnected());
    copy();
    EXPECT_EQ(taken(), "plain;");
    cSlot<Object> const silent(nullptr, &Object::plain);
    slot = silent;
    signal();
    EXPECT_EQ(taken(), "plain;");
}

TEST(Signal, copies_of_typed_signals_are_unconnected) {
    TextSlot const slot(&note_text);
    auto signal = std::make_unique<cSignal1<char const *>>();
    signal->connect(slot);
    auto copy = std::make_unique<cSignal1<char const *>>(*signal);
    EXPECT_FALSE(copy->isconnected());
    signal.reset();
    copy.reset();
    EXPECT_FALSE(slot.isconnected());
    cSignal2<int, int> const two;
    cSignal2<int, int> const other(two);
    cSigInfo const info;
    cSigInfo const another(info);
    EXPECT_FALSE(other.isconnected() || another.isconnected());
}

TEST(Signal, a_slot_held_by_block_is_not_called_directly_either) {
    Object object;
    cSlot<Object> const slot(&object, &Object::plain);
    auto const hold = slot.block();
    slot();
    EXPECT_EQ(taken(), "");
}

TEST(Signal, a_slot_that_throws_is_not_left_blocked) {
    struct Thrower {
        void run() { throw std::runtime_error("run"); }
    } object;
    cSlot<Thrower> slot(&object, &Thrower::run);
    slot.blockoncall(true);
    EXPECT_THROW(slot(), std::runtime_error);
    EXPECT_FALSE(slot.isblocked());
}

TEST(DeleteSignal, is_connected_by_its_constructor_and_fires_once) {
    FunctionSlot const slot(&note);
    { cDeleteSignal const signal(slot); }
    EXPECT_EQ(taken(), "note;");
    EXPECT_FALSE(slot.isconnected());
}

TEST(DeleteSignal, is_still_a_complete_object_while_it_fires) {
    CallLog log;
    cSSBase const *destroyed = nullptr;
    bool same = false;
    LogSlot const slot(log, "a",
                       [&] { same = dynamic_cast<cDeleteSignal const *>(destroyed) != nullptr; });
    {
        cDeleteSignal const signal(slot);
        destroyed = &signal;
    }
    EXPECT_TRUE(same);
    EXPECT_EQ(log.take(), "a;");
}

TEST(DeleteSignal, a_throwing_target_does_not_leave_the_destructor) {
    CallLog log;
    LogSlot const thrower(log, "thrower", [] { throw 7; }), next(log, "next");
    {
        cDeleteSignal const signal(thrower);
        signal.connect(next);
    }
    EXPECT_EQ(log.take(), "thrower;");
    EXPECT_EQ(cConnection::lock_count(), 0);
    EXPECT_FALSE(next.isconnected());
}

TEST(DeleteSignal, a_copy_announces_only_its_own_destruction) {
    FunctionSlot const slot(&note);
    cDeleteSignal const signal(slot);
    { cDeleteSignal const copy(signal); }
    EXPECT_EQ(taken(), "");
    signal.disconnect();
}

TEST(SigInfo, formats_for_all_targets) {
    cSigInfo const info;
    TextSlot const a(&note_text, info);
    FunctionSlot const b(&note, info);
    info("%d %s", 5, "x");
    EXPECT_EQ(taken(), "text(5 x);note;");
}

TEST(SigInfo, zero_and_null_are_arguments_and_not_a_list) {
    cSigInfo const info;
    TextSlot const slot(&note_text, info);
    info("%i %s", 0, "x");
    info("%i", 0);
    info("%d", 0);
    EXPECT_EQ(taken(), "text(0 x);text(0);text(0);");
    static_assert(!cArgumentList<std::nullptr_t> && !cArgumentList<int> && !cArgumentList<long> &&
                  !cArgumentList<void *> && !cArgumentList<char const *>);
}

TEST(SigInfo, a_single_string_is_sent_unformatted) {
    cSigInfo const info;
    TextSlot const slot(&note_text, info);
    std::string const text = "100% %s %n";
    info(text.c_str());
    EXPECT_EQ(taken(), "text(100% %s %n);");
    cSignal1<char const *> const &base = info;
    base("50%");
    EXPECT_EQ(taken(), "text(50%);");
}

void fire_list(cSigInfo const &info, char const *format, ...) {
    std::va_list args;
    va_start(args, format);
    info(format, args);
    info(format, args); // the first call has read a copy
    va_end(args);
}

TEST(SigInfo, accepts_a_list_and_leaves_it_unread) {
    cSigInfo const info;
    TextSlot const slot(&note_text, info);
    fire_list(info, "%d-%s", 1, "a");
    EXPECT_EQ(taken(), "text(1-a);text(1-a);");
}

TEST(SigInfo, truncates_at_1023_characters) {
    cSigInfo const info;
    TextSlot const slot(&note_text, info);
    for (std::size_t const length : {1022u, 1023u, 1024u, 5000u}) {
        std::string const text(length, 'x');
        info("%s", text.c_str());
        EXPECT_EQ(taken(), "text(" + text.substr(0, 1023) + ");");
    }
    info("%s", "short again");
    EXPECT_EQ(taken(), "text(short again);");
}

TEST(SigInfo, its_own_buffer_may_be_an_argument) {
    static cSigInfo const *again;
    cSigInfo const outer, inner;
    again = &inner;
    TextSlot const wrap([](char const *text) { (*again)("<%s>", text); });
    outer.connect(wrap);
    TextSlot const slot(&note_text, inner);
    outer("%s", "x");
    EXPECT_EQ(taken(), "text(<x>);");
}

TEST(SigInfo, the_process_has_one_buffer) {
    static char const *first, *second;
    cSigInfo const a, b;
    TextSlot const slot_a([](char const *text) { first = text; }, a);
    TextSlot const slot_b([](char const *text) { second = text; }, b);
    a("%d", 1);
    b("%d", 2);
    EXPECT_EQ(first, second);
}

TEST(SigInfo, a_null_format_fires_nothing) {
    cSigInfo const info;
    FunctionSlot const slot(&note, info);
    fire_list(info, nullptr);
    EXPECT_EQ(taken(), "");
}

TEST(SigInfo, can_be_blocked_like_every_signal) {
    cSigInfo const info;
    TextSlot const slot(&note_text, info);
    auto const hold = info.block();
    info("%d", 1);
    EXPECT_EQ(taken(), "");
}

TEST(SignalEdge, a_string_signal_calls_a_function_without_arguments) {
    cSignal1<char const *> const signal;
    FunctionSlot const slot(&note);
    signal.connect(slot);
    signal("x");
    EXPECT_EQ(taken(), "note;");
}

TEST(SignalEdge, a_target_of_one_argument_receives_the_first_of_two) {
    cSignal2<int, int> const signal;
    cSSBase1<int> const &slot = IntSlot(&note_int);
    signal.connect(slot);
    signal(7, 8);
    EXPECT_EQ(taken(), "int(7);");
}

TEST(SignalEdge, a_delete_signal_as_a_member_announces_the_destruction_of_its_owner) {
    struct Owner {
        cDeleteSignal ended;
        ~Owner() { calls += "~Owner;"; }
    };
    CallLog log;
    LogSlot target(log, "ended"), next(log, "next");
    target.then = [&] { target.disconnect(); };
    {
        Owner owner;
        owner.ended.connect(target);
        owner.ended.connect(next);
    }
    EXPECT_EQ(taken(), "~Owner;");
    EXPECT_EQ(log.take(), "ended;next;");
    EXPECT_EQ(cConnection::queue_length(), 0u);
}

TEST(SignalEdge, a_slot_with_a_null_object_does_nothing) {
    cSignal1<char const *> const signal;
    cSlot<Object> const plain(nullptr, &Object::plain, signal);
    cSlot1<Object, char const *> const text(nullptr, &Object::text, signal);
    signal("x");
    plain();
    text("x");
    EXPECT_EQ(taken(), "");
}

TEST(SignalEdge, an_unconnected_sig_info_does_not_read_its_arguments) {
    cSigInfo const info;
    char const *const unreadable = reinterpret_cast<char const *>(1);
    info("%s", unreadable);
    FunctionSlot const slot(&note, info);
    info.disconnect();
    info("%s", unreadable);
    EXPECT_EQ(taken(), "");
}

TEST(SignalEdge, a_blocked_second_signal_does_not_stop_the_other_targets) {
    CallLog log;
    cSignal const first, second;
    LogSlot const a(log, "a"), behind_second(log, "second"), b(log, "b");
    first.connect(a);
    first.connect(second);
    second.connect(behind_second);
    first.connect(b);
    {
        auto const hold = second.block();
        first();
        EXPECT_EQ(log.take(), "a;b;");
    }
    first();
    EXPECT_EQ(log.take(), "a;second;b;");
}

TEST(SignalEdge, a_slot_with_blockoncall_is_not_called_recursively) {
    CallLog log;
    cSignal const signal;
    LogSlot slot(log, "slot"), other(log, "other");
    slot.then = [&] {
        if (log.text.size() < 100) signal();
    };
    signal.connect(slot);
    signal.connect(other);
    slot.blockoncall(true);
    signal();
    EXPECT_EQ(log.take(), "slot;other;other;");
    EXPECT_FALSE(slot.isblocked());
}

} // namespace

// Emissions: what may be connected, disconnected and destroyed during a call, and when memory is
// freed.

#include "qrv/base/csignal.h"

#include "tests/base/call_log.h"

#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <vector>

namespace {

TEST(Emission, an_unconnected_signal_does_nothing) {
    cSignal const signal;
    signal();
    signal.oneshot();
    EXPECT_EQ(signal.end(), nullptr);
    EXPECT_EQ(cConnection::lock_count(), 0);
}

TEST(Emission, the_deletion_lock_is_held_only_during_calls) {
    CallLog log;
    cSignal const signal;
    int inside = -1;
    LogSlot const a(log, "a", [&] { inside = cConnection::lock_count(); });
    signal.connect(a);
    signal();
    EXPECT_EQ(inside, 1);
    EXPECT_EQ(cConnection::lock_count(), 0);
    auto const hold = signal.block();
    signal();
    EXPECT_EQ(cConnection::lock_count(), 0);
}

TEST(Emission, a_slot_may_disconnect_itself_its_predecessor_and_its_successor) {
    CallLog log;
    cSignal const signal;
    LogSlot a(log, "a"), b(log, "b"), c(log, "c"), d(log, "d");
    for (LogSlot const *slot : {&a, &b, &c, &d}) signal.connect(*slot);
    b.then = [&] {
        b.disconnect();
        a.disconnect();
        c.disconnect();
    };
    signal();
    EXPECT_EQ(log.take(), "a;b;d;");
    EXPECT_EQ(cConnection::queue_length(), 0u);
    signal();
    EXPECT_EQ(log.take(), "d;");
    EXPECT_EQ(signal.broken_rule(true), "");
}

TEST(Emission, a_slot_may_destroy_itself_and_its_signal) {
    CallLog log;
    auto signal = std::make_unique<cSignal>();
    auto slot = std::make_unique<LogSlot>(log, "a");
    LogSlot const next(log, "b");
    signal->connect(*slot);
    signal->connect(next);
    slot->then = [&] {
        slot.reset();
        signal.reset();
        log.text += "both destroyed;";
    };
    (*signal)();
    EXPECT_EQ(log.take(), "a;both destroyed;");
    EXPECT_FALSE(next.isconnected());
    EXPECT_EQ(cConnection::queue_length(), 0u);
}

TEST(Emission, a_slot_with_blockoncall_may_destroy_itself_and_its_signal) {
    CallLog log;
    auto signal = std::make_unique<cSignal>();
    auto slot = std::make_unique<LogSlot>(log, "a");
    signal->connect(*slot);
    signal->blockoncall(true);
    slot->blockoncall(true);
    slot->then = [&] {
        signal.reset();
        slot.reset();
    };
    (*signal)();
    EXPECT_EQ(log.take(), "a;");
    EXPECT_EQ(cConnection::queue_length(), 0u);
}

TEST(Emission, a_connected_slot_destroyed_while_its_signal_emits_is_not_called) {
    CallLog log;
    cSignal const signal;
    auto victim = std::make_unique<LogSlot>(log, "victim");
    LogSlot const a(log, "a", [&] { victim.reset(); });
    signal.connect(a);
    signal.connect(*victim);
    signal();
    EXPECT_EQ(log.take(), "a;");
    signal();
    EXPECT_EQ(log.take(), "a;");
}

TEST(Emission, a_blocked_node_in_the_middle_is_skipped) {
    CallLog log;
    cSignal const signal;
    LogSlot const a(log, "a"), b(log, "b"), c(log, "c");
    signal.connect(a);
    signal.connect(b)->block();
    signal.connect(c);
    signal();
    EXPECT_EQ(log.take(), "a;c;");
}

TEST(Emission, a_slot_blocked_during_the_emission_is_not_called) {
    CallLog log;
    cSignal const signal;
    LogSlot a(log, "a"), b(log, "b");
    signal.connect(a);
    cConnection const *const second = signal.connect(b);
    a.then = [&] { second->block(); };
    signal();
    EXPECT_EQ(log.take(), "a;");
}

TEST(Emission, an_exception_skips_the_remaining_slots_and_ends_the_block_and_the_lock) {
    CallLog log;
    cSignal signal;
    LogSlot const a(log, "a"), b(log, "b", [] { throw std::runtime_error("b"); }), c(log, "c");
    for (LogSlot const *slot : {&a, &b, &c}) signal.connect(*slot);
    signal.blockoncall(true);
    EXPECT_THROW(signal(), std::runtime_error);
    EXPECT_EQ(log.take(), "a;b;");
    EXPECT_FALSE(signal.isblocked());
    EXPECT_EQ(cConnection::lock_count(), 0);
    EXPECT_THROW(signal(), std::runtime_error);
    EXPECT_EQ(log.take(), "a;b;");
}

TEST(Emission, an_exception_after_the_signal_was_destroyed_frees_its_nodes) {
    CallLog log;
    auto signal = std::make_unique<cSignal>();
    LogSlot const a(log, "a", [&] {
        signal.reset();
        throw 7;
    });
    signal->connect(a);
    EXPECT_THROW((*signal)(), int);
    EXPECT_EQ(cConnection::queue_length(), 0u);
    EXPECT_FALSE(a.isconnected());
}

TEST(Emission, an_exception_propagates_through_forwarding_signals) {
    CallLog log;
    cSignal const outer, inner;
    LogSlot const thrower(log, "thrower", [] { throw 7; }), next(log, "next");
    outer.connect(inner);
    outer.connect(next);
    inner.connect(thrower);
    EXPECT_THROW(outer(), int);
    EXPECT_EQ(log.take(), "thrower;");
    EXPECT_EQ(cConnection::lock_count(), 0);
}

TEST(Emission, a_circle_of_signals_ends_at_the_one_with_blockoncall) {
    CallLog log;
    cSignal a, b;
    LogSlot const slot(log, "slot");
    a.blockoncall(true);
    a.connect(slot);
    a.connect(b);
    cSignal const back;
    b.connect(back);
    back.connect(a);
    a();
    EXPECT_EQ(log.take(), "slot;");
    b();
    EXPECT_EQ(log.take(), "slot;");
}

TEST(Emission, a_manual_walk_ends_when_its_base_is_destroyed) {
    CallLog log;
    auto signal = std::make_unique<cSignal>();
    LogSlot const a(log, "a"), b(log, "b");
    signal->connect(a);
    signal->connect(b);
    cConnection::LockDelete const no_purge;
    cConnection const *node = signal->begin();
    signal.reset();
    int steps = 0;
    for (; !node->isend() && steps < 10; node = node->next()) ++steps;
    EXPECT_EQ(steps, 0);
    EXPECT_TRUE(node->isdeleted());
    EXPECT_EQ(node->my_base(), nullptr);
    EXPECT_EQ(node->other_base(), nullptr);
    EXPECT_FALSE(bool(*node));
    EXPECT_EQ(cConnection::queue_length(), 5u); // two nodes for each link, and the head
}

TEST(Emission, a_queued_node_stays_linked_and_is_freed_once) {
    CallLog log;
    cSignal const signal;
    LogSlot const a(log, "a");
    cConnection const *const node = signal.connect(a);
    {
        cConnection::LockDelete const no_purge;
        signal.disconnect(a, true);
        EXPECT_TRUE(node->isdeleted() && node->islinked());
        EXPECT_FALSE(node->isconnected() || signal.isconnected());
        EXPECT_EQ(signal.begin(), node);
        signal.disconnect();
        EXPECT_EQ(cConnection::queue_length(), 2u);
        EXPECT_EQ(signal.broken_rule(true), "");
        signal.connect(a);
        EXPECT_EQ(signal.broken_rule(true), "");
    }
    EXPECT_EQ(cConnection::queue_length(), 0u);
    EXPECT_TRUE(signal.isconnected(a));
}

TEST(Emission, oneshot_is_blocked_like_a_call) {
    CallLog log;
    cSignal const signal;
    LogSlot const a(log, "a"), b(log, "b");
    signal.connect(a);
    signal.connect(b);
    {
        auto const hold = signal.block();
        signal.oneshot();
        EXPECT_EQ(signal.begin()->other_base(), &a); // the ring is not even rotated
    }
    signal.oneshot();
    EXPECT_EQ(log.take(), "a;");
}

TEST(Emission, oneshot_of_a_single_connection_calls_it_each_time) {
    CallLog log;
    cSignal const signal;
    LogSlot const a(log, "a");
    signal.connect(a);
    signal.oneshot();
    signal.oneshot();
    EXPECT_EQ(log.take(), "a;a;");
}

TEST(Emission, oneshot_survives_a_slot_that_destroys_the_signal) {
    CallLog log;
    auto signal = std::make_unique<cSignal>();
    LogSlot const a(log, "a", [&] { signal.reset(); }), b(log, "b");
    signal->connect(a);
    signal->connect(b);
    signal->oneshot();
    EXPECT_EQ(log.take(), "a;");
    EXPECT_EQ(cConnection::queue_length(), 0u);
}

TEST(Emission, oneshot_continues_with_the_next_after_a_slot_disconnects_itself) {
    CallLog log;
    cSignal const signal;
    LogSlot a(log, "a"), b(log, "b");
    a.then = [&] { a.disconnect(); };
    signal.connect(a);
    signal.connect(b);
    signal.oneshot();
    signal.oneshot();
    EXPECT_EQ(log.take(), "a;b;");
}

TEST(Emission, oneshot_calls_nothing_at_an_incoming_link) {
    CallLog log;
    cSignal const before, signal;
    LogSlot const a(log, "a"), b(log, "b");
    before.connect(a);
    before.connect(signal);
    signal.connect(b);
    signal.oneshot();
    EXPECT_EQ(log.take(), "");
    signal.oneshot();
    EXPECT_EQ(log.take(), "b;");
}

TEST(EmissionEdge, destroying_a_signal_from_its_own_slot_ends_the_emission) {
    CallLog log;
    auto signal = std::make_unique<cSignal>();
    std::size_t waiting = 0;
    LogSlot const a(log, "a"), b(log, "b", [&] {
        signal.reset();
        waiting = cConnection::queue_length();
    });
    LogSlot const c(log, "c");
    for (LogSlot const *slot : {&a, &b, &c}) signal->connect(*slot);
    (*signal)();
    EXPECT_EQ(log.take(), "a;b;");
    EXPECT_EQ(waiting, 7u); // two nodes for each link, and the head
    EXPECT_EQ(cConnection::queue_length(), 0u);
    EXPECT_FALSE(a.isconnected() || b.isconnected() || c.isconnected());
}

TEST(EmissionEdge, nested_emissions_free_nodes_at_the_end_of_the_outermost) {
    CallLog log;
    cSignal const outer;
    auto inner = std::make_unique<cSignal>();
    LogSlot const cutter(log, "cutter", [&] { inner.reset(); });
    std::size_t after_inner = 0;
    LogSlot const caller(log, "caller", [&] {
        (*inner)();
        after_inner = cConnection::queue_length();
    });
    std::size_t later = 0;
    LogSlot const watcher(log, "watcher", [&] { later = cConnection::queue_length(); });
    inner->connect(cutter);
    outer.connect(caller);
    outer.connect(watcher);
    outer();
    EXPECT_EQ(log.take(), "caller;cutter;watcher;");
    EXPECT_EQ(after_inner, 3u);
    EXPECT_EQ(later, 3u);
    EXPECT_EQ(cConnection::queue_length(), 0u);
    EXPECT_EQ(cConnection::lock_count(), 0);
}

TEST(EmissionEdge, a_signal_with_blockoncall_fired_from_its_own_slot_does_nothing) {
    CallLog log;
    cSignal signal;
    LogSlot const a(log, "a", [&] {
        signal();
        signal.oneshot();
    });
    LogSlot const b(log, "b");
    signal.connect(a);
    signal.connect(b);
    signal.blockoncall(true);
    signal();
    EXPECT_EQ(log.take(), "a;b;");
    EXPECT_FALSE(signal.isblocked());
}

TEST(EmissionEdge, a_slot_connected_during_an_emission_is_called_and_a_disconnected_one_is_not) {
    CallLog log;
    cSignal const signal;
    LogSlot const added(log, "added"), dropped(log, "dropped");
    LogSlot const a(log, "a", [&] {
        signal.connect(added);
        signal.disconnect(dropped, true);
    });
    signal.connect(a);
    signal.connect(dropped);
    signal();
    EXPECT_EQ(log.take(), "a;added;");
    // the new slot is also called when the last slot connects it
    cSignal const other;
    LogSlot const last(log, "last"), adder(log, "adder", [&] { other.connect(last); });
    other.connect(adder);
    other();
    EXPECT_EQ(log.take(), "adder;last;");
}

TEST(EmissionEdge, oneshot_calls_three_slots_in_turn_and_rotates_past_a_blocked_one) {
    CallLog log;
    cSignal const signal;
    LogSlot const a(log, "a"), b(log, "b"), c(log, "c");
    for (LogSlot const *slot : {&a, &b, &c}) signal.connect(*slot);
    signal.oneshot();
    EXPECT_EQ(log.take(), "a;");
    signal.oneshot();
    EXPECT_EQ(log.take(), "b;");
    signal.oneshot();
    EXPECT_EQ(log.take(), "c;");
    signal.find(a)->block();
    signal.oneshot();
    EXPECT_EQ(log.take(), "");
    EXPECT_EQ(signal.begin()->other_base(), &b);
    EXPECT_EQ(signal.broken_rule(true), "");
}

} // namespace

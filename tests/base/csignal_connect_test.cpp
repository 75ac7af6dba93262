// Connections between bases: which bases are connected, in which order, with which use counts, and
// which are blocked.

#include "qrv/base/csignal.h"

#include "tests/base/call_log.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <vector>

namespace {

int connections_of(cSSBase const &base) {
    int count = 0;
    for (auto *node = base.begin(); node != base.end(); node = node->next()) ++count;
    return count;
}

std::string broken_rules(cSSBase const &base) {
    return base.broken_rule(true) + cConnection::broken_queue_rule();
}

TEST(Connect, a_fresh_signal_has_no_ring) {
    cSignal const signal;
    EXPECT_EQ(signal.begin(), nullptr);
    EXPECT_EQ(signal.end(), nullptr);
    EXPECT_FALSE(signal.isconnected());
    EXPECT_FALSE(signal.isblocked());
    EXPECT_FALSE(signal.blockoncall());
    EXPECT_EQ(signal.broken_rule(true), "");
    static_assert(sizeof(cSignal) == 2 * sizeof(void *));
}

TEST(Connect, both_ends_know_their_bases_and_direction) {
    CallLog log;
    cSignal const signal;
    LogSlot const slot(log, "a");
    cConnection *const mine = signal.connect(slot);
    cConnection *const theirs = slot.find(signal);
    ASSERT_NE(theirs, nullptr);
    EXPECT_EQ(signal.find(slot), mine);
    EXPECT_EQ(mine->my_base(), &signal);
    EXPECT_EQ(mine->other_base(), &slot);
    EXPECT_EQ(theirs->my_base(), &slot);
    EXPECT_EQ(theirs->other_base(), &signal);
    EXPECT_FALSE(mine->istarget());
    EXPECT_TRUE(theirs->istarget());
    EXPECT_TRUE(mine->isconnected() && mine->islinked() && bool(*mine));
    EXPECT_FALSE(mine->isdeleted() || mine->isblocked() || mine->isend());
    EXPECT_TRUE(signal.isconnected() && slot.isconnected());
    EXPECT_TRUE(signal.isconnected(slot) && slot.isconnected(signal));
    EXPECT_EQ(broken_rules(signal) + broken_rules(slot), "");
}

TEST(Connect, a_ring_runs_from_first_to_last_and_back_to_its_head) {
    CallLog log;
    cSignal const signal;
    LogSlot const a(log, "a"), b(log, "b");
    cConnection *const first = signal.connect(a);
    cConnection *const second = signal.connect(b);
    EXPECT_EQ(signal.begin(), first);
    EXPECT_EQ(first->next(), second);
    EXPECT_EQ(second->next(), signal.end());
    EXPECT_EQ(signal.end()->next(), first);
    EXPECT_EQ(signal.end()->prev(), second);
    EXPECT_EQ(second->prev(), first);
    EXPECT_TRUE(signal.end()->isend());
    EXPECT_FALSE(first->isend());
}

TEST(Connect, a_null_connection_is_not_valid_and_has_no_base) {
    cConnection const *const none = nullptr;
    EXPECT_FALSE(cConnection::valid(none));
    EXPECT_EQ(cConnection::my_base(none), nullptr);
    EXPECT_EQ(cConnection::other_base(none), nullptr);
    CallLog log;
    cSignal const signal;
    LogSlot const slot(log, "a");
    cConnection const *const node = signal.connect(slot);
    EXPECT_TRUE(cConnection::valid(node));
    EXPECT_EQ(cConnection::my_base(node), &signal);
    EXPECT_EQ(cConnection::other_base(node), &slot);
    EXPECT_TRUE(cConnection::valid(signal.end()));
    EXPECT_EQ(cConnection::other_base(signal.end()), nullptr);
}

TEST(Connect, targets_are_called_in_the_order_of_connection) {
    CallLog log;
    cSignal const signal;
    LogSlot const a(log, "a"), b(log, "b"), c(log, "c");
    signal.connect(b);
    signal.connect(a);
    signal.connect(c);
    signal();
    EXPECT_EQ(log.take(), "b;a;c;");
}

TEST(Connect, a_connection_may_be_inserted_before_another_in_both_rings) {
    CallLog log;
    cSignal const signal, other;
    LogSlot const a(log, "a"), b(log, "b");
    cConnection *const first = signal.connect(a);
    other.connect(b);
    cConnection *const placed = signal.connect(b, false, first, b.begin());
    EXPECT_EQ(signal.begin(), placed);
    EXPECT_EQ(b.begin()->other_base(), &signal);
    signal();
    EXPECT_EQ(log.take(), "b;a;");
    EXPECT_EQ(broken_rules(signal) + broken_rules(b), "");
}

TEST(Connect, a_position_in_another_ring_means_the_end) {
    CallLog log;
    cSignal const signal, other;
    LogSlot const a(log, "a"), b(log, "b"), c(log, "c");
    signal.connect(a);
    cConnection *const foreign = other.connect(c);
    cConnection *const node = signal.connect(b, false, foreign, foreign);
    EXPECT_EQ(node->my_base(), &signal);
    EXPECT_EQ(node->next(), signal.end());
    signal();
    EXPECT_EQ(log.take(), "a;b;");
    EXPECT_EQ(broken_rules(signal) + broken_rules(other) + broken_rules(b), "");
}

TEST(Connect, the_position_is_ignored_for_a_connected_pair) {
    CallLog log;
    cSignal const signal;
    LogSlot const a(log, "a"), b(log, "b");
    cConnection *const first = signal.connect(a);
    cConnection *const second = signal.connect(b);
    EXPECT_EQ(signal.connect(b, true, first), second);
    EXPECT_EQ(signal.begin(), first);
    EXPECT_EQ(first->blocks(), 0);
    EXPECT_EQ(second->uses(), 2);
}

TEST(Connect, a_signal_constructed_with_a_target_is_connected) {
    CallLog log;
    LogSlot const a(log, "a");
    cSignal const signal(a);
    signal();
    EXPECT_EQ(log.take(), "a;");
}

TEST(Connect, disconnecting_an_unconnected_base_changes_nothing) {
    CallLog log;
    cSignal const signal;
    LogSlot const a(log, "a"), b(log, "b");
    signal.disconnect(a, true);
    signal.connect(a);
    signal.disconnect(b, false);
    signal.disconnect(b, true);
    EXPECT_TRUE(signal.isconnected(a));
    EXPECT_EQ(connections_of(signal), 1);
}

TEST(Connect, disconnect_removes_every_link_in_both_directions) {
    CallLog log;
    cSignal const before, signal;
    LogSlot const a(log, "a"), b(log, "b");
    before.connect(signal);
    signal.connect(a);
    signal.connect(a);
    signal.connect(b);
    signal.disconnect();
    EXPECT_FALSE(signal.isconnected() || before.isconnected() || a.isconnected());
    EXPECT_EQ(connections_of(signal) + connections_of(before) + connections_of(a), 0);
    EXPECT_EQ(cConnection::queue_length(), 0u);
    signal.disconnect();
    EXPECT_EQ(broken_rules(signal), "");
}

TEST(Connect, destroying_either_partner_removes_the_link_from_both_rings) {
    CallLog log;
    auto signal = std::make_unique<cSignal>();
    auto slot = std::make_unique<LogSlot>(log, "a");
    LogSlot const other(log, "b");
    signal->connect(*slot);
    signal->connect(other);
    slot.reset();
    EXPECT_EQ(connections_of(*signal), 1);
    (*signal)();
    EXPECT_EQ(log.take(), "b;");
    signal.reset();
    EXPECT_FALSE(other.isconnected());
    EXPECT_EQ(cConnection::queue_length(), 0u);
    EXPECT_EQ(broken_rules(other), "");
}

TEST(Connect, a_base_may_be_connected_to_itself_and_destroyed) {
    CallLog log;
    {
        cSignal const signal;
        LogSlot const a(log, "a");
        signal.connect(a);
        signal.connect(signal);
        signal.connect(signal);
        EXPECT_EQ(connections_of(signal), 3);
        EXPECT_EQ(broken_rules(signal), "");
        signal.disconnect(signal, true);
        EXPECT_EQ(connections_of(signal), 1);
        signal.connect(signal);
        signal.disconnect();
        EXPECT_EQ(connections_of(signal), 0);
        signal.connect(signal, true);
        signal.connect(signal);
        signal.connect(a);
    }
    EXPECT_EQ(cConnection::queue_length(), 0u);
    EXPECT_EQ(cConnection::lock_count(), 0);
}

TEST(Connect, a_self_connected_signal_with_blockoncall_fires_once) {
    CallLog log;
    cSignal signal;
    LogSlot const a(log, "a");
    signal.blockoncall(true);
    signal.connect(signal);
    signal.connect(a);
    signal();
    EXPECT_EQ(log.take(), "a;");
}

TEST(Connect, forty_thousand_connections_of_one_pair_wrap_the_use_count) {
    CallLog log;
    cSignal const signal;
    LogSlot const a(log, "a");
    for (int i = 0; i < 40000; ++i) signal.connect(a);
    EXPECT_EQ(signal.begin()->uses(), 40000 - 65536);
    EXPECT_EQ(a.begin()->uses(), 40000 - 65536);
    EXPECT_EQ(broken_rules(signal), "");
    signal.disconnect(a, false);
    EXPECT_FALSE(signal.isconnected());
}

TEST(Connect, the_block_count_wraps_at_sixteen_bits) {
    CallLog log;
    cSignal const signal;
    LogSlot const a(log, "a");
    cConnection const *const node = signal.connect(a);
    for (int i = 0; i < 32767; ++i) node->block();
    EXPECT_TRUE(node->isblocked());
    node->block();
    EXPECT_EQ(node->blocks(), -32768);
    EXPECT_FALSE(node->isblocked());
}

TEST(Connect, a_node_is_blocked_by_either_end) {
    CallLog log;
    cSignal const signal;
    LogSlot const a(log, "a"), b(log, "b");
    cConnection const *const mine = signal.connect(a);
    signal.connect(b);
    cConnection const *const theirs = a.begin();
    mine->block();
    EXPECT_TRUE(mine->isblocked() && theirs->isblocked());
    signal();
    EXPECT_EQ(log.take(), "b;");
    mine->unblock();
    theirs->block();
    EXPECT_TRUE(mine->isblocked() && theirs->isblocked());
    signal();
    EXPECT_EQ(log.take(), "b;");
    theirs->unblock();
    signal();
    EXPECT_EQ(log.take(), "a;b;");
}

TEST(Connect, unblocking_one_reason_leaves_the_others) {
    CallLog log;
    cSignal const signal;
    LogSlot const a(log, "a");
    cConnection const *const node = signal.connect(a);
    for (int i = 0; i < 5; ++i) node->block();
    node->unblock(false);
    EXPECT_EQ(node->blocks(), 4);
}

TEST(Connect, an_exclusive_connection_blocks_the_others_in_both_directions) {
    CallLog log;
    cSignal const before, signal;
    LogSlot const a(log, "a"), b(log, "b");
    before.connect(signal);
    signal.connect(a);
    cConnection const *const node = signal.connect(b, true);
    EXPECT_EQ(signal.find(before)->blocks(), 1);
    EXPECT_EQ(signal.find(a)->blocks(), 1);
    EXPECT_EQ(node->blocks(), 0);
    EXPECT_EQ(b.begin()->blocks(), 0);
    before(); // the link from `before` is blocked, too
    EXPECT_EQ(log.take(), "");
    signal();
    EXPECT_EQ(log.take(), "b;");
}

TEST(Connect, destroying_the_target_ends_an_exclusive_connection) {
    CallLog log;
    cSignal const signal;
    LogSlot const a(log, "a");
    auto b = std::make_unique<LogSlot>(log, "b");
    signal.connect(a);
    signal.connect(*b, true);
    signal();
    EXPECT_EQ(log.take(), "b;");
    b.reset();
    EXPECT_EQ(signal.find(a)->blocks(), 0);
    signal();
    EXPECT_EQ(log.take(), "a;");
}

TEST(Connect, exclusive_connections_nest) {
    CallLog log;
    cSignal const signal;
    LogSlot const a(log, "a"), b(log, "b"), c(log, "c");
    signal.connect(a);
    signal.connect(b, true);
    signal.connect(c, true);
    signal();
    EXPECT_EQ(log.take(), "c;");
    signal.disconnect(c, true);
    signal();
    EXPECT_EQ(log.take(), "b;");
    signal.disconnect(b, true);
    signal();
    EXPECT_EQ(log.take(), "a;");
}

TEST(Connect, block_creates_the_ring_and_blocks_calls_to_a_slot) {
    CallLog log;
    cSignal const signal;
    LogSlot const a(log, "a");
    {
        auto const hold = signal.block();
        EXPECT_NE(signal.end(), nullptr);
        EXPECT_TRUE(signal.isblocked());
        signal.connect(a);
        signal();
        EXPECT_EQ(log.take(), "");
    }
    signal();
    EXPECT_EQ(log.take(), "a;");
    auto const hold = a.block();
    signal();
    a();
    EXPECT_EQ(log.take(), "");
}

TEST(Connect, a_block_may_outlive_its_base) {
    cRef<cShared> hold;
    {
        cSignal const signal;
        hold = signal.block();
        EXPECT_EQ(hold->refs(), 2u);
    }
    EXPECT_EQ(hold->refs(), 1u);
}

TEST(Connect, blockoncall_creates_the_ring_and_can_be_revoked) {
    cSignal signal;
    signal.blockoncall(false);
    EXPECT_NE(signal.end(), nullptr);
    EXPECT_FALSE(signal.blockoncall());
    signal.blockoncall(true);
    EXPECT_TRUE(signal.blockoncall());
    signal.blockoncall(false);
    EXPECT_FALSE(signal.blockoncall());
    EXPECT_FALSE(signal.isblocked());
}

TEST(Connect, block_on_call_applies_only_where_the_flag_is_set) {
    cSignal signal;
    {
        cSSBase::BlockOnCall const none(nullptr);
        cSSBase::BlockOnCall const ringless(&signal);
        EXPECT_EQ(signal.end(), nullptr);
    }
    signal.blockoncall(true);
    {
        std::optional<cSSBase::BlockOnCall> first(&signal);
        EXPECT_TRUE(signal.isblocked());
        cSSBase::BlockOnCall shared(nullptr);
        shared = *first;
        first.reset();
        EXPECT_TRUE(signal.isblocked());
    }
    EXPECT_FALSE(signal.isblocked());
}

TEST(Connect, copies_are_unconnected_and_assignment_changes_nothing) {
    CallLog log;
    LogSlot const a(log, "a");
    auto signal = std::make_unique<cSignal>(a);
    signal->blockoncall(true);
    auto const hold = signal->block();
    auto copy = std::make_unique<cSignal>(*signal);
    EXPECT_EQ(copy->begin(), nullptr);
    EXPECT_FALSE(copy->isblocked() || copy->blockoncall());
    *copy = *signal;
    EXPECT_EQ(copy->begin(), nullptr);
    LogSlot const b(log, "b");
    copy->connect(b);
    *copy = *signal;
    EXPECT_TRUE(copy->isconnected(b));
    (*copy)();
    EXPECT_EQ(log.take(), "b;");
    signal.reset();
    copy.reset();
    EXPECT_FALSE(a.isconnected() || b.isconnected());
}

TEST(Connect, a_signal_constructed_from_a_signal_as_target_forwards) {
    CallLog log;
    LogSlot const a(log, "a");
    cSignal const inner(a);
    cSignal const outer(static_cast<cSSBase0 const &>(inner));
    outer();
    EXPECT_EQ(log.take(), "a;");
}

TEST(Connect, copies_and_conversions_exist_only_as_declared) {
    static_assert(!std::is_copy_constructible_v<cConnection::LockDelete>);
    static_assert(!std::is_copy_assignable_v<cConnection::LockDelete>);
    static_assert(std::is_copy_constructible_v<cSSBase::BlockOnCall>);
    static_assert(std::is_copy_assignable_v<cSSBase::BlockOnCall>);
    static_assert(std::is_copy_constructible_v<cSignal> && std::is_copy_assignable_v<cSignal>);
    static_assert(!std::is_default_constructible_v<cConnection>);
    static_assert(!std::is_copy_constructible_v<cConnection>);
    static_assert(!std::is_convertible_v<cSSBase0 const &, cSignal>);
    static_assert(std::has_virtual_destructor_v<cSSBase>);
    static_assert(![]<class T>(T *node) {
        return requires { delete node; };
    }(static_cast<cConnection *>(nullptr)));
}

TEST(ConnectionEdge, connecting_the_same_pair_three_times_counts_uses) {
    CallLog log;
    cSignal const signal;
    LogSlot const a(log, "a");
    cConnection *const node = signal.connect(a);
    EXPECT_EQ(signal.connect(a), node);
    EXPECT_EQ(signal.connect(a), node);
    EXPECT_EQ(connections_of(signal), 1);
    EXPECT_EQ(connections_of(a), 1);
    EXPECT_EQ(node->uses(), 3);
    EXPECT_EQ(a.begin()->uses(), 3);
    signal.disconnect(a, false);
    signal.disconnect(a, false);
    EXPECT_TRUE(signal.isconnected(a));
    EXPECT_EQ(node->uses(), 1);
    EXPECT_EQ(a.begin()->uses(), 1);
    signal.disconnect(a, false);
    EXPECT_FALSE(signal.isconnected(a) || a.isconnected(signal));
    for (int i = 0; i < 3; ++i) signal.connect(a);
    signal.disconnect(a, true);
    EXPECT_FALSE(signal.isconnected(a));
}

TEST(ConnectionEdge, connecting_back_returns_the_link_and_does_not_reverse_it) {
    CallLog log;
    cSignal const a;
    LogSlot b(log, "b");
    cConnection *const link = a.connect(b);
    cConnection *const back = b.connect(a, false, nullptr, nullptr);
    EXPECT_EQ(back, b.begin());
    EXPECT_EQ(back->other_base(), &a);
    EXPECT_TRUE(back->istarget());
    EXPECT_FALSE(link->istarget());
    EXPECT_EQ(link->uses(), 2);
    EXPECT_EQ(connections_of(a) + connections_of(b), 2);
    a();
    EXPECT_EQ(log.take(), "b;");
}

TEST(ConnectionEdge, a_link_is_not_followed_backwards_but_the_target_can_find_and_remove_it) {
    CallLog log;
    cSignal const a, b;
    LogSlot const a_target(log, "after a");
    a.connect(a_target);
    a.connect(b);
    b();
    EXPECT_EQ(log.take(), "");
    ASSERT_NE(b.find(a), nullptr);
    EXPECT_EQ(b.find(a)->my_base(), &b);
    EXPECT_TRUE(b.find(a)->istarget());
    b.disconnect(a, true);
    EXPECT_EQ(b.find(a), nullptr);
    EXPECT_EQ(a.find(b), nullptr);
    EXPECT_TRUE(a.isconnected(a_target));
}

TEST(ConnectionEdge, the_result_of_block_blocks_until_its_last_copy_is_destroyed) {
    cSignal const signal;
    auto first = signal.block();
    EXPECT_TRUE(signal.isblocked());
    auto second = first;
    first = nullptr;
    EXPECT_TRUE(signal.isblocked());
    second = nullptr;
    EXPECT_FALSE(signal.isblocked());
}

TEST(ConnectionEdge, a_connection_made_after_an_exclusive_one_is_left_at_minus_1) {
    CallLog log;
    cSignal const signal;
    LogSlot const a(log, "a"), b(log, "b"), c(log, "c");
    signal.connect(a);
    signal.connect(b, true);
    cConnection const *const later = signal.connect(c);
    signal();
    EXPECT_EQ(log.take(), "b;c;");
    signal.disconnect(b, true);
    EXPECT_EQ(signal.find(a)->blocks(), 0);
    EXPECT_EQ(later->blocks(), -1);
    later->block();
    EXPECT_FALSE(later->isblocked());
    signal();
    EXPECT_EQ(log.take(), "a;c;");
    later->block();
    EXPECT_TRUE(later->isblocked());
    signal();
    EXPECT_EQ(log.take(), "a;");
}

TEST(ConnectionEdge, unblock_all_turns_5_and_1_into_0_and_0_into_minus_1) {
    CallLog log;
    cSignal const signal;
    LogSlot const a(log, "a");
    cConnection const *const node = signal.connect(a);
    for (int i = 0; i < 5; ++i) node->block();
    node->unblock(true);
    EXPECT_EQ(node->blocks(), 0);
    node->block();
    node->unblock(true);
    EXPECT_EQ(node->blocks(), 0);
    node->unblock(true);
    EXPECT_EQ(node->blocks(), -1);
}

TEST(ConnectionEdge, unlock_with_the_count_at_0_leaves_it_0_and_purges) {
    CallLog log;
    EXPECT_EQ(cConnection::lock_count(), 0);
    OpenConnection::unlock_delete();
    EXPECT_EQ(cConnection::lock_count(), 0);
    cSignal const signal;
    LogSlot const a(log, "a");
    signal.connect(a);
    OpenConnection::lock_delete();
    signal.disconnect();
    EXPECT_EQ(cConnection::queue_length(), 2u);
    OpenConnection::do_delete();
    EXPECT_EQ(cConnection::queue_length(), 2u);
    OpenConnection::unlock_delete();
    EXPECT_EQ(cConnection::queue_length(), 0u);
    OpenConnection::unlock_delete();
    OpenConnection::unlock_delete();
    EXPECT_EQ(cConnection::lock_count(), 0);
    OpenConnection::lock_delete();
    EXPECT_EQ(cConnection::lock_count(), 1);
    OpenConnection::unlock_delete();
    EXPECT_EQ(cConnection::lock_count(), 0);
}

} // namespace

// The rule checker: each test breaks one rule and repairs it before other code uses the ring.

#include "qrv/base/csignal.h"

#include "tests/base/call_log.h"
#include "tests/support/broken.h"

#include <gtest/gtest.h>

// Accesses the private members of nodes and rings; both declare it a friend.
struct cRingProbe {
    static cConnection *&next(cConnection *node) { return node->next_; }
    static cConnection *&partner(cConnection *node) { return node->partner_; }
    static cSSBase *&base(cConnection *node) { return node->base_; }
    static std::uint16_t &flags(cConnection *node) { return node->flags_; }
    static std::int16_t &uses(cConnection *node) { return node->uses_; }
    static std::uintptr_t &delete_next(cConnection *node) { return node->delete_next_; }
    static cRef<cShared> &token(cSSBase &base) { return base.start_->block_token_; }
    static void cut_and_queue(cConnection *node) {
        node->cut();
        node->queue();
    }
    static constexpr std::uint16_t target = cConnection::target_bit;
    static constexpr std::uint16_t exclusive = cConnection::exclusive_bit;
};

namespace {

class RingRules : public testing::Test {
  protected:
    CallLog log;
    cSignal signal;
    LogSlot a{log, "a"}, b{log, "b"};
    cConnection *first = signal.connect(a);
    cConnection *second = signal.connect(b);

    void TearDown() override {
        EXPECT_EQ(signal.broken_rule(true), "");
        EXPECT_EQ(a.broken_rule(true), "");
    }
};

TEST_F(RingRules, a_valid_ring_breaks_no_rule) {
    EXPECT_EQ(signal.broken_rule(false), "");
    EXPECT_EQ(signal.broken_rule(true), "");
}

TEST_F(RingRules, l1_next_and_prev_disagree) {
    Broken const skip(cRingProbe::next(first), signal.end());
    EXPECT_EQ(signal.broken_rule(false), "L1 next and prev disagree");
}

TEST_F(RingRules, l2_a_node_of_another_base) {
    Broken<cSSBase *> const base(cRingProbe::base(second), &a);
    EXPECT_EQ(signal.broken_rule(false), "L2 wrong base");
}

TEST_F(RingRules, l3_the_head_has_a_link) {
    {
        Broken const partner(cRingProbe::partner(signal.end()), second);
        EXPECT_EQ(signal.broken_rule(false), "L3 the head has a link");
    }
    {
        Broken const flags(cRingProbe::flags(signal.end()), cRingProbe::target);
        EXPECT_EQ(signal.broken_rule(false), "L3 the head has a link");
    }
    Broken<std::uintptr_t> const queued(cRingProbe::delete_next(signal.end()), 1);
    EXPECT_EQ(signal.broken_rule(false), "L3 the head has a link");
}

TEST_F(RingRules, l3_the_token_is_missing) {
    Broken<cRef<cShared>> const token(cRingProbe::token(signal), nullptr);
    EXPECT_EQ(signal.broken_rule(false), "L3 no token");
}

TEST_F(RingRules, l4_a_queued_node_with_a_partner) {
    Broken<std::uintptr_t> const queued(cRingProbe::delete_next(first), 1);
    EXPECT_EQ(signal.broken_rule(false), "L4 queued with a partner");
}

TEST_F(RingRules, l5_a_node_that_is_not_queued_has_no_partner) {
    Broken<cConnection *> const partner(cRingProbe::partner(first), nullptr);
    EXPECT_EQ(signal.broken_rule(false), "L5 not its partner's partner");
    EXPECT_EQ(a.broken_rule(false), "L5 not its partner's partner");
}

TEST_F(RingRules, l6_both_nodes_or_neither_are_the_target) {
    {
        Broken const flags(cRingProbe::flags(first), cRingProbe::target);
        EXPECT_EQ(signal.broken_rule(false), "L6 not one target");
    }
    Broken<std::uint16_t> const flags(cRingProbe::flags(a.begin()), 0);
    EXPECT_EQ(signal.broken_rule(false), "L6 not one target");
}

TEST_F(RingRules, l6_the_use_counts_differ) {
    Broken<std::int16_t> const uses(cRingProbe::uses(first), 2);
    EXPECT_EQ(signal.broken_rule(false), "L6 uses differ");
}

TEST_F(RingRules, l6_the_target_is_exclusive) {
    Broken<std::uint16_t> const flags(cRingProbe::flags(a.begin()),
                                      cRingProbe::target | cRingProbe::exclusive);
    EXPECT_EQ(a.broken_rule(false), "L6 exclusive target");
}

TEST_F(RingRules, l7_a_partners_ring_is_broken_and_only_the_deep_check_sees_it) {
    Broken<cRef<cShared>> const token(cRingProbe::token(a), nullptr);
    EXPECT_EQ(signal.broken_rule(false), "");
    EXPECT_EQ(signal.broken_rule(true), "L7 at a partner: L3 no token");
}

TEST_F(RingRules, q1_a_queued_node_reads_as_alive) {
    cConnection::LockDelete const no_purge;
    signal.disconnect(a, true);
    ASSERT_EQ(cConnection::queue_length(), 2u);
    EXPECT_EQ(cConnection::broken_queue_rule(), "");
    Broken<std::uintptr_t> const alive(cRingProbe::delete_next(first), 0);
    EXPECT_EQ(cConnection::broken_queue_rule(), "Q1 a queued node reads as alive");
}

TEST_F(RingRules, q1_a_node_is_queued_twice) {
    cConnection::LockDelete const no_purge;
    signal.disconnect(a, true);
    auto const itself = reinterpret_cast<std::uintptr_t>(first);
    Broken const loop(cRingProbe::delete_next(first), itself);
    EXPECT_EQ(cConnection::broken_queue_rule(), "Q1 a node is queued twice");
}

TEST_F(RingRules, q1_a_queued_node_has_a_partner_and_the_deep_check_of_a_ring_sees_it) {
    cConnection::LockDelete const no_purge;
    cConnection *const cut = signal.begin();
    signal.disconnect(a, true);
    Broken const partner(cRingProbe::partner(cut), second);
    EXPECT_EQ(cConnection::broken_queue_rule(), "Q1 a queued node has a partner");
    EXPECT_EQ(b.broken_rule(true), "L7 at a partner: L4 queued with a partner");
    cSignal other;
    LogSlot const c(log, "c");
    EXPECT_EQ(other.broken_rule(true), "");
}

TEST_F(RingRules, q2_nodes_are_queued_without_a_lock) {
    cConnection *const other = a.begin();
    cRingProbe::cut_and_queue(first);
    cRingProbe::cut_and_queue(other);
    EXPECT_EQ(cConnection::broken_queue_rule(), "Q2 queued nodes and no lock");
    EXPECT_EQ(signal.broken_rule(false), "");
    EXPECT_EQ(signal.broken_rule(true), "L7 in the queue: Q2 queued nodes and no lock");
    OpenConnection::do_delete();
    EXPECT_EQ(cConnection::broken_queue_rule(), "");
    EXPECT_EQ(cConnection::queue_length(), 0u);
}

#ifdef QRV_CHECKS
TEST_F(RingRules, a_change_that_finds_a_broken_ring_stops_the_process) {
    EXPECT_DEATH(
        {
            cRingProbe::uses(first) = 7;
            signal.connect(b);
        },
        "broken rule of connections: L6 uses differ");
}
#endif

} // namespace

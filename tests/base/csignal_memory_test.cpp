// Memory of connections: what is allocated and when, that all of it is freed, and the state after a
// failed allocation. This file replaces the global allocation functions of the test program.

#include "qrv/base/csignal.h"

#include "tests/base/call_log.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>
#include <new>

namespace {

long living = 0;
long fail_after =
    -1; // the number of the allocation that fails, counted from 0; negative: no allocation fails

void *allocate(std::size_t size) {
    if (fail_after == 0) {
        fail_after = -1;
        throw std::bad_alloc();
    }
    if (fail_after > 0) --fail_after;
    void *const memory = std::malloc(size ? size : 1);
    if (!memory) throw std::bad_alloc();
    ++living;
    return memory;
}

void release(void *memory) noexcept {
    if (memory) --living;
    std::free(memory);
}

} // namespace

void *operator new(std::size_t size) { return allocate(size); }
void operator delete(void *memory) noexcept { release(memory); }
void operator delete(void *memory, std::size_t) noexcept { release(memory); }

namespace {

class Memory : public testing::Test {
  protected:
    void TearDown() override { fail_after = -1; }
};

using Slot = cFunctionSlot<void (*)()>;

TEST_F(Memory, an_unconnected_signal_allocates_nothing) {
    long const before = living;
    cSignal const signal;
    signal();
    signal.disconnect();
    EXPECT_EQ(living, before);
}

TEST_F(Memory, a_link_allocates_two_nodes_two_heads_and_two_tokens) {
    cSignal const signal;
    Slot const slot(nullptr);
    long const before = living;
    signal.connect(slot);
    EXPECT_EQ(living, before + 6);
    signal.connect(slot);
    EXPECT_EQ(living, before + 6);
    signal.disconnect(slot, true);
    EXPECT_EQ(living, before + 4); // heads and tokens live as long as signal and slot
}

TEST_F(Memory, everything_is_freed_with_the_bases) {
    long const before = living;
    {
        cSignal const signal;
        Slot const a(nullptr, signal), b(nullptr, signal);
        signal();
        signal.connect(signal);
        auto const hold = signal.block();
    }
    EXPECT_EQ(living, before);
}

TEST_F(Memory, everything_is_freed_when_a_signal_is_destroyed_in_its_own_slot) {
    static std::unique_ptr<cSignal> signal;
    long const before = living;
    {
        signal = std::make_unique<cSignal>();
        Slot const slot([] { signal.reset(); });
        signal->connect(slot);
        signal->blockoncall(true);
        (*signal)();
    }
    EXPECT_EQ(living, before);
}

TEST_F(Memory, a_failed_connect_changes_nothing_and_leaks_nothing) {
    long const before = living;
    long failing = 0;
    for (bool connected = false; !connected; ++failing) {
        ASSERT_LT(failing, 10);
        cSignal const signal;
        Slot const first(nullptr, signal);
        Slot const slot(nullptr);
        fail_after = failing;
        try {
            signal.connect(slot, true);
            connected = true;
        } catch (std::bad_alloc const &) {
        }
        fail_after = -1;
        EXPECT_EQ(slot.isconnected(), connected);
        EXPECT_EQ(signal.begin()->next() == signal.end(), !connected);
        EXPECT_EQ(signal.begin()->blocks(), connected ? 1 : 0);
        EXPECT_EQ(signal.broken_rule(true) + slot.broken_rule(true), "");
    }
    EXPECT_EQ(failing - 1, 4); // a head, its token, and the two nodes
    EXPECT_EQ(living, before);
}

} // namespace

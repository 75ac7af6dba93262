// The rule checker of repository lists: each test breaks one rule and repairs it.

#include "qrv/modules/crepository.h"
#include "tests/support/broken.h"

#include <gtest/gtest.h>

// Accesses the private members of lists and entries; both declare it a friend.
struct cRepositoryProbe {
    static cRepositoryEntry &add(cRepositoryList &list, char const *name) {
        return list.insert(name);
    }
    static void remove(cRepositoryEntry &entry) { delete &entry; }
    static cRepositoryEntry *&next(cRepositoryEntry &entry) { return entry.next_; }
    static cRepositoryList *&owner(cRepositoryEntry &entry) { return entry.owner_; }
    static std::uint32_t &hash(cRepositoryEntry &entry) { return entry.hash_; }
    static std::uintptr_t *&slot(cRepositoryEntry &entry) { return entry.slot_; }
    static std::string &name(cRepositoryEntry &entry) { return entry.name_; }
    static std::uint32_t &count(cRepositoryList &list) { return list.count_; }
    static std::uint32_t &unused(cRepositoryList &list) { return list.unused_; }
    static std::uint32_t &size(cRepositoryList &list) { return list.size_; }
    static std::uintptr_t &cell(cRepositoryList &list, std::uint32_t i) { return list.table_[i]; }
};

namespace {

using Probe = cRepositoryProbe;

class RepositoryRules : public testing::Test {
  protected:
    void TearDown() override { EXPECT_EQ(list.broken_rule(true), ""); }

    cRepositoryList list, other;
    cRepositoryEntry &a = Probe::add(list, "a");
    cRepositoryEntry &b = Probe::add(list, "b");
};

TEST_F(RepositoryRules, a_valid_list_breaks_no_rule) {
    EXPECT_EQ(list.broken_rule(false), "");
    EXPECT_EQ(list.broken_rule(true), "");
}

TEST_F(RepositoryRules, r1_next_and_prev_disagree) {
    Broken<cRepositoryEntry *> const loop(Probe::next(a), &a);
    EXPECT_EQ(list.broken_rule(false), "R1 next and prev disagree");
}

TEST_F(RepositoryRules, r2_wrong_owner) {
    Broken<cRepositoryList *> const owner(Probe::owner(b), &other);
    EXPECT_EQ(list.broken_rule(false), "R2 wrong owner b");
}

TEST_F(RepositoryRules, r2_wrong_hash) {
    Broken<std::uint32_t> const hash(Probe::hash(b), Probe::hash(a));
    EXPECT_EQ(list.broken_rule(false), "R2 wrong hash b");
}

TEST_F(RepositoryRules, r2_wrong_cell) {
    {
        Broken<std::uintptr_t *> const slot(Probe::slot(a), Probe::slot(b));
        EXPECT_EQ(list.broken_rule(false), "R2 wrong cell a");
    }
    {
        Broken<std::uintptr_t *> const slot(Probe::slot(a), nullptr);
        EXPECT_EQ(list.broken_rule(false), "R2 wrong cell a");
    }
    Broken<std::uintptr_t> const erased(*Probe::slot(a), 1);
    EXPECT_EQ(list.broken_rule(false), "R2 wrong cell a");
}

TEST_F(RepositoryRules, r3_count) {
    Broken<std::uint32_t> const count(Probe::count(list), 1);
    EXPECT_EQ(list.broken_rule(false), "R3 count");
}

TEST_F(RepositoryRules, r3_too_full) {
    Broken<std::uint32_t> const size(Probe::size(list), 2);
    EXPECT_EQ(list.broken_rule(false), "R3 too full");
}

TEST_F(RepositoryRules, r3_too_few_unused) {
    {
        Broken<std::uint32_t> const enough(Probe::unused(list), 12);
        EXPECT_EQ(list.broken_rule(false), "");
    }
    Broken<std::uint32_t> const few(Probe::unused(list), 11);
    EXPECT_EQ(list.broken_rule(false), "R3 too few unused");
}

TEST_F(RepositoryRules, r4_the_table_holds_more_entries_than_the_ring) {
    std::uint32_t free = 0;
    while (Probe::cell(list, free) != 0) ++free;
    Broken<std::uintptr_t> const twice(Probe::cell(list, free),
                                       reinterpret_cast<std::uintptr_t>(&a));
    EXPECT_EQ(list.broken_rule(false), "");
    EXPECT_EQ(list.broken_rule(true), "R4 entries in the table");
}

TEST_F(RepositoryRules, r4_unused_cells) {
    Broken<std::uint32_t> const unused(Probe::unused(list), 50);
    EXPECT_EQ(list.broken_rule(false), "");
    EXPECT_EQ(list.broken_rule(true), "R4 unused cells");
}

TEST_F(RepositoryRules, r5_an_entry_that_a_search_does_not_reach) {
    std::uintptr_t *const old = Probe::slot(b);
    std::uint32_t far = 0;
    while (Probe::cell(list, far) != 0) ++far;
    std::uintptr_t *const place = &Probe::cell(list, far);
    {
        Broken<std::uintptr_t> const moved(*place, *old);
        Broken<std::uintptr_t> const left(*old, 0);
        Broken<std::uintptr_t *> const slot(Probe::slot(b), place);
        EXPECT_EQ(list.broken_rule(false), "");
        EXPECT_EQ(list.broken_rule(true), "R5 not found b");
    }
}

TEST_F(RepositoryRules, an_insertion_uses_the_first_tombstone_on_its_probe_path) {
    cRepositoryEntry &first = Probe::add(other, "ABAB");
    cRepositoryEntry &second = Probe::add(other, "ABBc"); // has the same hash
    std::uintptr_t *const erased = Probe::slot(first);
    EXPECT_NE(Probe::slot(second), erased);
    auto const unused = Probe::unused(other);
    Probe::remove(first);
    EXPECT_EQ(*erased, 1u);
    cRepositoryEntry &third = Probe::add(other, "BcAB");
    EXPECT_EQ(Probe::slot(third), erased);
    EXPECT_EQ(Probe::unused(other), unused);
    EXPECT_EQ(other.broken_rule(true), "");
}

#ifdef QRV_CHECKS
TEST_F(RepositoryRules, a_change_that_finds_a_broken_list_stops_the_process) {
    EXPECT_DEATH(
        {
            Probe::hash(a) = 1;
            Probe::add(list, "c");
        },
        "broken rule of the repository: R2 wrong hash a");
}
#endif

} // namespace

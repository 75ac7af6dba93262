// The rule checker of undo lists: each test breaks one rule and repairs it.

#include "tests/util/undo_action.h"

// Accesses the private members of lists and actions; both declare it a friend.
struct cUndoProbe {
    static bool &active(cUndoGlobalList &list) { return list.active_; }
    static auto &entries(cUndoGlobalList &list) { return list.entries_; }
    static auto &holder(cUndo &action) { return action.holder_; }
    static bool &taken(cUndo &action) { return action.taken_; }
};

namespace {

using Probe = cUndoProbe;

class UndoRules : public Undo {
  protected:
    UndoRules() {
        add("a");
        b = add("b");
    }
    ~UndoRules() override { EXPECT_EQ(list->broken_rule(), ""); }

    Action *b = nullptr;
};

TEST_F(UndoRules, a_valid_list_breaks_no_rule) {
    EXPECT_EQ(list->broken_rule(), "");
    EXPECT_EQ(log, ""); // and the checker calls no action
}

TEST_F(UndoRules, u1_a_null_entry) {
    Probe::entries(*list).emplace_back();
    EXPECT_EQ(list->broken_rule(), "U1 null");
    Probe::entries(*list).pop_back();
}

TEST_F(UndoRules, u2_an_action_is_listed_twice_adjacent_or_apart) {
    auto &entries = Probe::entries(*list);
    entries.push_front(entries.front());
    EXPECT_EQ(list->broken_rule(), "U2 listed twice");
    entries.pop_front();
    entries.push_back(entries.front());
    EXPECT_EQ(list->broken_rule(), "U2 listed twice");
    entries.pop_back();
}

TEST_F(UndoRules, u3_an_inactive_list_has_entries) {
    Probe::active(*list) = false;
    EXPECT_EQ(list->broken_rule(), "U3 inactive and not empty");
    Probe::active(*list) = true;
}

TEST_F(UndoRules, u4_an_action_without_a_holder) {
    auto const holder = Probe::holder(*b);
    Probe::holder(*b).reset();
    EXPECT_EQ(list->broken_rule(), "U4 another holder");
    Probe::holder(*b) = holder;
}

TEST_F(UndoRules, u4_an_action_counted_by_two_holders) {
    auto const holder = Probe::holder(*b);
    std::shared_ptr<cUndo> const second(b, [](cUndo *) {});
    Probe::holder(*b) = second;
    EXPECT_EQ(list->broken_rule(), "U4 another holder");
    Probe::holder(*b) = holder;
}

TEST_F(UndoRules, u4_an_action_that_was_never_added) {
    Probe::taken(*b) = false;
    EXPECT_EQ(list->broken_rule(), "U4 another holder");
    Probe::taken(*b) = true;
}

} // namespace

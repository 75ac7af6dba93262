// The rule checker of undo lists: each rule is broken once, and mended again.

#include "tests/util/undo_action.h"

// Reaches into lists and actions; a friend of both.
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

TEST_F(UndoRules, a_sound_list_breaks_none) {
    EXPECT_EQ(list->broken_rule(), "");
    EXPECT_EQ(log, ""); // and calls nothing
}

TEST_F(UndoRules, u1_a_null_entry) {
    Probe::entries(*list).emplace_back();
    EXPECT_EQ(list->broken_rule(), "U1 null");
    Probe::entries(*list).pop_back();
}

TEST_F(UndoRules, u2_an_action_twice_side_by_side_or_apart) {
    auto &entries = Probe::entries(*list);
    entries.push_front(entries.front());
    EXPECT_EQ(list->broken_rule(), "U2 stands twice");
    entries.pop_front();
    entries.push_back(entries.front());
    EXPECT_EQ(list->broken_rule(), "U2 stands twice");
    entries.pop_back();
}

TEST_F(UndoRules, u3_a_shut_list_with_entries) {
    Probe::active(*list) = false;
    EXPECT_EQ(list->broken_rule(), "U3 shut and not empty");
    Probe::active(*list) = true;
}

TEST_F(UndoRules, u4_an_action_that_knows_no_holder) {
    auto const holder = Probe::holder(*b);
    Probe::holder(*b).reset();
    EXPECT_EQ(list->broken_rule(), "U4 another holder");
    Probe::holder(*b) = holder;
}

TEST_F(UndoRules, u4_an_action_that_two_count_apart) {
    auto const holder = Probe::holder(*b);
    std::shared_ptr<cUndo> const second(b, [](cUndo *) {});
    Probe::holder(*b) = second;
    EXPECT_EQ(list->broken_rule(), "U4 another holder");
    Probe::holder(*b) = holder;
}

TEST_F(UndoRules, u4_an_action_that_was_never_taken) {
    Probe::taken(*b) = false;
    EXPECT_EQ(list->broken_rule(), "U4 another holder");
    Probe::taken(*b) = true;
}

} // namespace

// The undo lists: order, costs, search, ownership and copies. cundo_reentry_test.cpp tests actions
// that change the lists calling them, cundo_rules_test.cpp tests the rules.

#include "tests/util/undo_action.h"

#include <type_traits>

namespace {

constexpr int unit = 0x1000000; // half of the limit

class UndoEdge : public Undo {};
class UndoAdd : public Undo {};
class UndoCopy : public Undo {};
class UndoGlobals : public Undo {};

// ---- the cases worth testing

TEST_F(UndoEdge, an_action_above_the_limit_stays_until_the_next_one_is_added) {
    add("a", 0x3000000);
    EXPECT_EQ(names(), "a");
    list->add(new Action(log, "b"));
    EXPECT_EQ(take_log(), "cost a; ~a; ");
    EXPECT_EQ(names(), "b");
}

TEST_F(UndoEdge, a_fourth_action_drops_the_oldest_two_of_three) {
    for (char const *name : {"a", "b", "c"}) add(name, 0); // all three are in the list
    for (char const *name : {"a", "b", "c"}) {
        Named info(name);
        static_cast<Action *>(list->find(&info))->cost(unit);
    }
    log.clear();
    list->add(new Action(log, "d", unit));
    EXPECT_EQ(take_log(), "cost c; cost b; cost a; ~a; cost c; cost b; ~b; cost c; ");
    EXPECT_EQ(names(), "dc");
}

TEST_F(UndoEdge, one_below_the_limit_nothing_is_dropped) {
    add("a", unit);
    add("b", unit - 1);
    list->add(new Action(log, "c"));
    EXPECT_EQ(take_log(), "cost b; cost a; ");
    EXPECT_EQ(names(), "cba");
}

TEST_F(UndoEdge, an_inactive_list_accepts_nothing_and_deletes_nothing) {
    list->setActive(false);
    Action action(log, "a");
    EXPECT_FALSE(list->add(&action));
    EXPECT_EQ(take_log(), "");
}

TEST_F(UndoEdge, only_the_newest_of_two_matching_actions_is_undone) {
    add("a");
    add("b");
    list->makeUndo(nullptr);
    EXPECT_EQ(take_log(), "undo b; ~b; ");
    EXPECT_EQ(names(), "a");
}

TEST_F(UndoEdge, find_returns_the_newest_match) {
    add("a");
    Action *const b = add("b");
    EXPECT_EQ(list->find(nullptr), b);
    EXPECT_EQ(take_log(), "isfor b; ");
}

TEST_F(UndoEdge, fisundo_returns_the_kind_without_an_argument_and_searches_with_an_info) {
    Named a("a"), b("b");
    add("a");
    EXPECT_TRUE(list->fIsUndo());
    EXPECT_FALSE(cUndoGlobalList(false).fIsUndo());
    EXPECT_EQ(take_log(), "");
    EXPECT_TRUE(list->fIsUndo(&a));
    EXPECT_FALSE(list->fIsUndo(&b));
    EXPECT_EQ(take_log(), "isfor a; isfor a; ");
}

TEST_F(UndoEdge, an_action_of_another_list_is_not_removed) {
    add("a");
    Action outside(log, "b");
    list->remove(&outside);
    EXPECT_EQ(take_log(), "");
    EXPECT_EQ(names(), "a");
}

// ---- adding and costs

TEST_F(UndoAdd, a_sum_equal_to_the_limit_is_too_much) {
    add("a", unit);
    add("b", unit);
    list->add(new Action(log, "c"));
    EXPECT_EQ(take_log(), "cost b; cost a; ~a; cost b; ");
    EXPECT_EQ(names(), "cb");
}

TEST_F(UndoAdd, the_cost_of_the_new_action_is_not_requested) {
    list->add(new Action(log, "a", INT_MAX));
    EXPECT_EQ(take_log(), "");
}

TEST_F(UndoAdd, costs_are_requested_again_on_each_pass) {
    Action *const a = add("a");
    Action *const b = add("b");
    add("c");
    b->cost(unit * 2);
    a->at_end = [&] { b->cost(0); }; // the previous cost of b is not remembered
    list->add(new Action(log, "d"));
    EXPECT_EQ(take_log(), "cost c; cost b; cost a; ~a; cost c; cost b; ");
    EXPECT_EQ(names(), "dcb");
}

TEST_F(UndoAdd, dropping_all_of_n_actions_requests_n_times_n_plus_1_by_2_costs) {
    for (int i = 0; i < 19; ++i) add("a");
    add("b", unit * 2); // the newest alone reaches the limit, so no other can stay
    int asked = 0;
    list->add(new Action(log, "c"));
    for (std::size_t at = 0; (at = log.find("cost", at)) != std::string::npos; ++at) ++asked;
    EXPECT_EQ(asked, 20 * 21 / 2);
    EXPECT_EQ(names(), "c");
}

TEST_F(UndoAdd, sums_beyond_32_bits_are_above_the_limit) {
    Action *const a = add("a"), *const b = add("b");
    a->cost(INT_MAX);
    b->cost(INT_MAX); // the sum is -2 in 32 bits
    list->add(new Action(log, "c"));
    EXPECT_EQ(take_log(), "cost b; cost a; ~a; cost b; ~b; ");
    EXPECT_EQ(names(), "c");
}

TEST_F(UndoAdd, negative_costs_make_space_and_the_loop_ends) {
    add("a", 0)->cost(INT_MIN);
    add("b", 0)->cost(INT_MIN); // the sum is 0 in 32 bits
    add("c", 0)->cost(INT_MAX);
    list->add(new Action(log, "d"));
    EXPECT_EQ(take_log(), "cost c; cost b; cost a; ");
    EXPECT_EQ(names(), "dcba");
}

TEST_F(UndoAdd, dropping_an_action_with_negative_cost_drops_the_others) {
    add("a", 0)->cost(-1);
    add("b", 0);
    add("c", unit * 2 + 1);
    list->add(new Action(log, "d"));
    EXPECT_EQ(take_log(), "cost c; cost b; cost a; ~a; cost c; cost b; ~b; cost c; ~c; ");
    EXPECT_EQ(names(), "d");
}

TEST_F(UndoAdd, null_is_not_added) {
    add("a", unit * 2);
    EXPECT_FALSE(list->add(nullptr));
    EXPECT_EQ(take_log(), ""); // no action is dropped for it
    EXPECT_EQ(names(), "a");
}

TEST_F(UndoAdd, an_action_is_in_a_list_at_most_once) {
    Action *const a = add("a", unit * 2);
    EXPECT_TRUE(list->add(a));
    EXPECT_EQ(take_log(), "");
    EXPECT_EQ(names(), "a");
    list.reset();
    EXPECT_EQ(take_log(), "~a; ");
}

TEST_F(UndoAdd, two_lists_may_share_an_action) {
    cUndoGlobalList other(false);
    Action *const a = add("a");
    EXPECT_TRUE(other.add(a));
    list->remove(a);
    EXPECT_EQ(take_log(), "");
    EXPECT_EQ(names(other), "a");
    EXPECT_EQ(names(), "");
    EXPECT_TRUE(list->add(a)); // moves it back
    other.remove(a);
    EXPECT_EQ(take_log(), "");
    list->remove(a);
    EXPECT_EQ(take_log(), "~a; ");
}

TEST_F(UndoAdd, a_copy_of_an_action_is_in_no_list) {
    Action *const a = add("a");
    auto *const copy = new Action(*a);
    EXPECT_TRUE(list->add(copy));
    EXPECT_EQ(names(), "aa");
    list->remove(a);
    EXPECT_EQ(names(), "a");
    list.reset();
    EXPECT_EQ(take_log(), "cost a; ~a; ~a; ");
}

TEST_F(UndoAdd, many_actions_are_deleted_from_the_front) {
    std::string wanted;
    for (int i = 0; i < 600; ++i) add(std::to_string(i));
    for (int i = 600; i-- > 0;) wanted += "~" + std::to_string(i) + "; ";
    list->setActive(false);
    EXPECT_EQ(take_log(), wanted);
}

// ---- undoing, finding, removing, shutting

TEST_F(Undo, an_empty_list_does_nothing) {
    list->makeUndo(nullptr);
    list->remove(nullptr);
    EXPECT_EQ(list->find(nullptr), nullptr);
    EXPECT_FALSE(list->fIsUndo(nullptr));
    EXPECT_TRUE(list->fActive());
    EXPECT_EQ(list->broken_rule(), "");
}

TEST_F(Undo, an_action_that_refuses_stays_and_the_next_is_called) {
    add("a");
    add("b")->refuses = true;
    add("c")->refuses = true;
    list->makeUndo(nullptr);
    EXPECT_EQ(take_log(), "undo c; undo b; undo a; ~a; ");
    EXPECT_EQ(names(), "cb");
    list->makeUndo(nullptr);
    EXPECT_EQ(take_log(), "undo c; undo b; ");
    EXPECT_EQ(names(), "cb");
}

TEST_F(Undo, an_info_finds_its_action_in_the_middle) {
    for (char const *name : {"a", "b", "c"}) add(name);
    Named b("b");
    list->makeUndo(&b);
    EXPECT_EQ(take_log(), "undo c; undo b; ~b; ");
    EXPECT_EQ(names(), "ca");
}

TEST_F(Undo, undo_calls_neither_isfor_nor_cost) {
    add("a");
    list->makeUndo(nullptr);
    EXPECT_EQ(take_log(), "undo a; ~a; ");
}

TEST_F(Undo, remove_deletes_first_middle_and_last) {
    Action *const a = add("a"), *const b = add("b"), *const c = add("c");
    list->remove(b);
    EXPECT_EQ(names(), "ca");
    list->remove(c);
    list->remove(a);
    EXPECT_EQ(names(), "");
    EXPECT_EQ(take_log(), "~b; ~c; ~a; ");
}

TEST_F(Undo, deactivating_deletes_from_the_front_and_leaves_the_list_empty) {
    for (char const *name : {"a", "b", "c"}) add(name);
    list->setActive(false);
    EXPECT_EQ(take_log(), "~c; ~b; ~a; ");
    EXPECT_FALSE(list->fActive());
    list->setActive(false);
    list->setActive(true);
    EXPECT_TRUE(list->fActive());
    EXPECT_EQ(names(), "");
    add("d");
    list->setActive(true); // later actions are not lost
    EXPECT_EQ(names(), "d");
}

TEST_F(Undo, the_destructor_deletes_from_the_front) {
    for (char const *name : {"a", "b", "c"}) add(name);
    list.reset();
    EXPECT_EQ(take_log(), "~c; ~b; ~a; ");
}

TEST_F(Undo, infos_can_be_copied) {
    static_assert(std::is_copy_constructible_v<cUndoInfoBase>);
    static_assert(std::has_virtual_destructor_v<cUndoInfoBase>);
    static_assert(std::has_virtual_destructor_v<cUndo> && std::is_abstract_v<cUndo>);
    Named a("a"), b(a);
    EXPECT_EQ(b.name, "a");
    b.name = "b";
    a = b;
    EXPECT_EQ(a.name, "b");
}

// ---- copies

TEST_F(UndoCopy, a_copy_has_the_same_kind_state_and_actions) {
    add("a");
    add("b");
    cUndoGlobalList const copy(*list);
    cUndoGlobalList second(copy);
    EXPECT_TRUE(second.fIsUndo());
    EXPECT_TRUE(second.fActive());
    EXPECT_EQ(names(second), "ba");
    EXPECT_EQ(names(), "ba");
    cUndoGlobalList shut(false);
    shut.setActive(false);
    cUndoGlobalList const third(shut);
    EXPECT_FALSE(third.fIsUndo());
    EXPECT_FALSE(third.fActive());
    log.clear();
}

TEST_F(UndoCopy, the_last_list_deletes_a_shared_action) {
    for (bool const copy_first : {true, false}) {
        auto original = std::make_unique<cUndoGlobalList>(true);
        add(*original, "a");
        add(*original, "b");
        auto copy = std::make_unique<cUndoGlobalList>(*original);
        (copy_first ? copy : original).reset();
        EXPECT_EQ(take_log(), "");
        (copy_first ? original : copy).reset();
        EXPECT_EQ(take_log(), "~b; ~a; ");
    }
}

TEST_F(UndoCopy, an_action_removed_from_one_list_stays_in_the_other) {
    Action *const a = add("a");
    cUndoGlobalList copy(*list);
    list->remove(a);
    EXPECT_EQ(take_log(), "");
    EXPECT_EQ(names(copy), "a");
    copy.makeUndo(nullptr);
    EXPECT_EQ(take_log(), "undo a; ~a; ");
}

TEST_F(UndoCopy, deactivating_one_list_does_not_affect_the_other) {
    add("a");
    cUndoGlobalList copy(*list);
    list->setActive(false);
    EXPECT_EQ(names(copy), "a");
    EXPECT_TRUE(copy.fActive());
    copy.setActive(false);
    EXPECT_EQ(take_log(), "~a; ");
}

TEST_F(UndoCopy, an_assignment_deletes_actions_that_are_in_no_other_list) {
    cUndoGlobalList other(false), keeper(false);
    for (char const *name : {"a", "b", "c"}) add(name);
    Action *const kept = add("d");
    keeper.add(kept);
    log.clear();
    add(other, "x");
    *list = other;
    EXPECT_EQ(take_log(), "~c; ~b; ~a; ");
    EXPECT_FALSE(list->fIsUndo());
    EXPECT_EQ(names(), "x");
    EXPECT_EQ(names(other), "x");
    EXPECT_EQ(names(keeper), "d");
}

TEST_F(UndoCopy, a_longer_list_can_be_assigned_to_a_shorter_and_to_an_empty_one) {
    cUndoGlobalList empty(false), shorter(false);
    for (char const *name : {"a", "b", "c"}) add(name);
    add(shorter, "x");
    shorter = *list;
    empty = *list;
    EXPECT_EQ(take_log(), "~x; ");
    EXPECT_EQ(names(shorter), "cba");
    EXPECT_EQ(names(empty), "cba");
    list.reset();
    shorter = cUndoGlobalList(true);
    EXPECT_EQ(take_log(), "");
    empty = shorter;
    EXPECT_EQ(take_log(), "~c; ~b; ~a; ");
}

TEST_F(UndoCopy, a_list_assigned_to_itself_is_unchanged) {
    add("a");
    add("b");
    cUndoGlobalList &same = *list;
    *list = same;
    EXPECT_EQ(take_log(), "");
    EXPECT_EQ(names(), "ba");
}

TEST_F(UndoCopy, assigning_an_inactive_list_deactivates_and_empties) {
    cUndoGlobalList shut(true);
    shut.setActive(false);
    add("a");
    *list = shut;
    EXPECT_EQ(take_log(), "~a; ");
    EXPECT_FALSE(list->fActive());
    EXPECT_EQ(list->broken_rule(), "");
}

// ---- the two of the process

TEST_F(UndoGlobals, the_process_has_a_list_for_undo_and_one_for_redo) {
    EXPECT_TRUE(undoGlobalList.fIsUndo());
    EXPECT_FALSE(redoGlobalList.fIsUndo());
    EXPECT_TRUE(undoGlobalList.fActive());
    EXPECT_TRUE(redoGlobalList.fActive());
}

TEST_F(UndoGlobals, an_action_moves_between_undo_and_redo) {
    Action *const a = add(undoGlobalList, "a");
    bool undone = false;
    a->at_undo = [&] {
        (undone ? undoGlobalList : redoGlobalList).add(a);
        undone = !undone;
    };
    for (int i = 0; i < 3; ++i) {
        undoGlobalList.makeUndo(nullptr);
        EXPECT_EQ(names(undoGlobalList) + "|" + names(redoGlobalList), "|a");
        redoGlobalList.makeUndo(nullptr);
        EXPECT_EQ(names(undoGlobalList) + "|" + names(redoGlobalList), "a|");
    }
    EXPECT_EQ(log.find('~'), std::string::npos);
    log.clear();
    undoGlobalList.remove(a);
    EXPECT_EQ(take_log(), "~a; ");
}

} // namespace

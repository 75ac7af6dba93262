// Actions that change the lists calling them: each of their functions changes, iterates or destroys
// a list, or throws. Sanitizers would report a call of a destroyed action.

#include "tests/util/undo_action.h"

#include <algorithm>

namespace {

constexpr int limit = 0x2000000;

class UndoInUndo : public Undo {};
class UndoInIsfor : public Undo {};
class UndoInCost : public Undo {};
class UndoInEnd : public Undo {};
class UndoThrow : public Undo {};

// ---- undo()

TEST_F(UndoInUndo, an_action_that_removes_itself_lives_until_it_returns) {
    for (bool const refuses : {false, true}) {
        add("a");
        Action *const b = add("b");
        b->refuses = refuses;
        b->at_undo = [&] { list->remove(b); };
        list->makeUndo(nullptr);
        EXPECT_EQ(take_log(),
                  refuses ? "undo b; b back; ~b; undo a; ~a; " : "undo b; b back; ~b; ");
        EXPECT_EQ(names(), refuses ? "" : "a");
        list->setActive(false);
        list->setActive(true);
    }
}

TEST_F(UndoInUndo, an_action_removed_meanwhile_is_not_called) {
    add("a");
    Action *const b = add("b"), *const c = add("c");
    c->refuses = true;
    c->at_undo = [&] { list->remove(b); };
    list->makeUndo(nullptr);
    EXPECT_EQ(take_log(), "undo c; ~b; c back; undo a; ~a; ");
    EXPECT_EQ(names(), "c");
}

TEST_F(UndoInUndo, an_action_removed_but_alive_in_a_copy_is_not_called) {
    Action *const b = add("b"), *const c = add("c");
    cUndoGlobalList copy(*list);
    c->refuses = true;
    c->at_undo = [&] { list->remove(b); };
    list->makeUndo(nullptr);
    EXPECT_EQ(take_log(), "undo c; c back; ");
    EXPECT_EQ(names(), "c");
    EXPECT_EQ(names(copy), "cb");
}

TEST_F(UndoInUndo, an_action_added_meanwhile_is_first_and_is_not_called) {
    add("a");
    Action *const b = add("b");
    b->refuses = true;
    b->at_undo = [&] { list->add(new Action(log, "c")); };
    list->makeUndo(nullptr);
    EXPECT_EQ(take_log(), "undo b; cost b; cost a; b back; undo a; ~a; ");
    EXPECT_EQ(names(), "cb");
}

TEST_F(UndoInUndo, an_undone_action_that_added_another_is_removed_alone) {
    Action *const a = add("a");
    a->at_undo = [&] { list->add(new Action(log, "b")); };
    list->makeUndo(nullptr);
    EXPECT_EQ(take_log(), "undo a; cost a; a back; ~a; ");
    EXPECT_EQ(names(), "b");
}

TEST_F(UndoInUndo, an_action_that_is_removed_and_added_again_stays_the_same) {
    Action *const a = add("a"); // succeeds, so it is removed from its new position
    a->at_undo = [&] {
        list->remove(a);
        list->add(a);
    };
    list->makeUndo(nullptr);
    EXPECT_EQ(take_log(), "undo a; a back; ~a; ");
    EXPECT_EQ(names(), "");
    Action *const b = add("b"); // refuses, so it stays
    b->refuses = true;
    b->at_undo = [&] {
        list->remove(b);
        list->add(b);
    };
    list->makeUndo(nullptr);
    EXPECT_EQ(take_log(), "undo b; b back; ");
    EXPECT_EQ(names(), "b");
}

TEST_F(UndoInUndo, an_action_that_deactivates_the_list_is_deleted_when_it_returns) {
    for (bool const refuses : {false, true}) {
        add("a");
        Action *const b = add("b");
        b->refuses = refuses;
        b->at_undo = [&] { list->setActive(false); };
        list->makeUndo(nullptr);
        EXPECT_EQ(take_log(), "undo b; ~a; b back; ~b; ");
        EXPECT_FALSE(list->fActive());
        list->setActive(true);
        EXPECT_EQ(names(), "");
    }
}

TEST_F(UndoInUndo, the_list_may_be_assigned_to) {
    cUndoGlobalList other(false);
    add(other, "x");
    add("a");
    Action *const b = add("b");
    b->refuses = true;
    b->at_undo = [&] { *list = other; };
    list->makeUndo(nullptr);
    EXPECT_EQ(take_log(), "undo b; ~a; b back; ~b; ");
    EXPECT_EQ(names(), "x");
}

TEST_F(UndoInUndo, the_list_may_be_destroyed) {
    for (bool const refuses : {false, true}) {
        list = std::make_unique<cUndoGlobalList>(true);
        add("a");
        Action *const b = add("b");
        b->refuses = refuses;
        b->at_undo = [&] { list.reset(); };
        list->makeUndo(nullptr);
        EXPECT_EQ(take_log(), "undo b; ~a; b back; ~b; ");
    }
}

TEST_F(UndoInUndo, the_list_may_be_destroyed_two_calls_deep) {
    Action *const a = add("a"), *const b = add("b");
    a->at_undo = [&] { list.reset(); };
    bool inside = false;
    b->at_undo = [&] {
        if (std::exchange(inside, true)) return;
        Named info("a");
        list->makeUndo(&info);
    };
    list->makeUndo(nullptr);
    EXPECT_EQ(take_log(), "undo b; undo b; b back; undo a; a back; ~a; b back; ~b; ");
}

TEST_F(UndoInUndo, a_copy_continues_when_the_original_is_destroyed) {
    add("a");
    Action *const b = add("b");
    b->at_undo = [&] { list.reset(); };
    cUndoGlobalList copy(*list);
    list->makeUndo(nullptr);
    EXPECT_EQ(take_log(), "undo b; b back; ");
    EXPECT_EQ(names(copy), "ba");
}

TEST_F(UndoInUndo, an_action_may_undo_the_next_one) {
    for (char const *name : {"a", "b"}) add(name);
    Action *const c = add("c");
    bool inside = false;
    c->at_undo = [&] {
        if (std::exchange(inside, true)) return;
        c->refuses = true; // it is also the first action of the inner call
        list->makeUndo(nullptr);
    };
    list->makeUndo(nullptr);
    EXPECT_EQ(take_log(), "undo c; undo c; c back; undo b; ~b; c back; ~c; ");
    EXPECT_EQ(names(), "a");
}

TEST_F(UndoInUndo, an_action_undone_within_itself_is_deleted_once) {
    add("a");
    Action *const b = add("b");
    bool inside = false;
    b->at_undo = [&] {
        if (!std::exchange(inside, true)) list->makeUndo(nullptr);
    };
    list->makeUndo(nullptr);
    EXPECT_EQ(take_log(), "undo b; undo b; b back; b back; ~b; ");
    EXPECT_EQ(names(), "a");
}

TEST_F(UndoInUndo, an_action_may_move_itself_to_the_other_list) {
    cUndoGlobalList redo(false);
    Action *const a = add("a");
    a->at_undo = [&] { EXPECT_TRUE(redo.add(a)); };
    list->makeUndo(nullptr);
    EXPECT_EQ(take_log(), "undo a; a back; ");
    EXPECT_EQ(names(redo), "a");
    EXPECT_EQ(names(), "");
}

// ---- isfor()

TEST_F(UndoInIsfor, an_action_that_removes_itself_is_not_found) {
    add("a");
    Action *const b = add("b");
    b->at_isfor = [&] { list->remove(b); };
    EXPECT_EQ(list->find(nullptr), list->find(nullptr));
    EXPECT_EQ(take_log(), "isfor b; ~b; isfor a; isfor a; ");
    EXPECT_EQ(names(), "a");
}

TEST_F(UndoInIsfor, the_list_may_be_deactivated_or_destroyed) {
    add("a");
    add("b")->at_isfor = [&] { list->setActive(false); };
    EXPECT_FALSE(list->fIsUndo(nullptr));
    EXPECT_EQ(take_log(), "isfor b; ~a; ~b; ");
    list->setActive(true);
    add("a");
    add("b")->at_isfor = [&] { list.reset(); };
    EXPECT_EQ(list->find(nullptr), nullptr);
    EXPECT_EQ(take_log(), "isfor b; ~a; ~b; ");
}

TEST_F(UndoInIsfor, others_may_be_added_and_removed) {
    Action *const a = add("a"), *const b = add("b"), *const c = add("c");
    Named info("a");
    c->at_isfor = [&] {
        list->remove(b);
        list->add(new Action(log, "d"));
    };
    EXPECT_EQ(list->find(&info), a);
    EXPECT_EQ(take_log(), "isfor c; ~b; cost c; cost a; isfor a; ");
    c->at_isfor = nullptr;
    EXPECT_EQ(names(), "dca");
}

// ---- cost()

TEST_F(UndoInCost, an_action_that_removes_itself_is_counted_once_more) {
    add("a");
    Action *const b = add("b", limit);
    b->at_cost = [&] { list->remove(b); };
    list->add(new Action(log, "c"));
    EXPECT_EQ(take_log(), "cost b; ~b; cost a; ~a; "); // the sum still contained its cost
    EXPECT_EQ(names(), "c");
}

TEST_F(UndoInCost, the_cost_of_an_action_removed_meanwhile_is_not_requested) {
    Action *const a = add("a"), *const b = add("b");
    b->at_cost = [&] { list->remove(a); };
    list->add(new Action(log, "c"));
    EXPECT_EQ(take_log(), "cost b; ~a; ");
    EXPECT_EQ(names(), "cb");
}

TEST_F(UndoInCost, a_list_deactivated_meanwhile_accepts_nothing) {
    add("a");
    add("b")->at_cost = [&] { list->setActive(false); };
    Action outside(log, "c");
    EXPECT_FALSE(list->add(&outside));
    EXPECT_EQ(take_log(), "cost b; ~a; ~b; ");
    list->setActive(true);
    EXPECT_EQ(names(), "");
}

TEST_F(UndoInCost, a_list_destroyed_meanwhile_accepts_nothing) {
    add("a");
    add("b")->at_cost = [&] { list.reset(); };
    Action outside(log, "c");
    EXPECT_FALSE(list->add(&outside));
    EXPECT_EQ(take_log(), "cost b; ~a; ~b; ");
}

TEST_F(UndoInCost, the_same_action_added_meanwhile_is_listed_once) {
    Action *const a = add("a");
    auto *const b = new Action(log, "b");
    bool inside = false;
    a->at_cost = [&] {
        if (std::exchange(inside, true)) return;
        EXPECT_TRUE(list->add(b));
    };
    EXPECT_TRUE(list->add(b));
    EXPECT_EQ(names(), "ba");
    list.reset();
    EXPECT_EQ(take_log(), "cost a; cost a; ~b; ~a; ");
}

TEST_F(UndoInCost, the_number_of_actions_limits_the_passes_even_if_actions_add_others) {
    for (int i = 0; i < 2; ++i) add("a");
    Action *const b = add("b");
    b->cost(limit);
    bool inside = false;
    b->at_cost = [&] { // each pass drops one action, and this one adds another
        if (std::exchange(inside, true)) return;
        b->cost(0); // so that the inner call drops no action
        list->add(new Action(log, "x"));
        b->cost(limit);
        inside = false;
    };
    list->add(new Action(log, "c"));
    EXPECT_EQ(std::count(log.begin(), log.end(), '~'), 3);
    log.clear();
    EXPECT_EQ(names(), "cxxx"); // b was dropped last
}

TEST_F(UndoInCost, an_action_being_added_survives_its_removal_from_another_list) {
    cUndoGlobalList other(false);
    Action *const a = add(other, "a");
    add("b")->at_cost = [&] { other.setActive(false); };
    EXPECT_TRUE(list->add(a)); // the other list releases it while space is made
    EXPECT_EQ(take_log(), "cost b; ");
    EXPECT_EQ(names(), "ab");
}

// ---- the destructor

TEST_F(UndoInEnd, sees_a_list_without_itself) {
    for (char const *name : {"a", "b"}) {
        add(name)->at_end = [&] { log += "[" + names() + "]"; };
    }
    list->makeUndo(nullptr);
    EXPECT_EQ(take_log(), "undo b; ~b; [a]");
    list->setActive(false);
    EXPECT_EQ(take_log(), "~a; []");
}

TEST_F(UndoInEnd, sees_a_deactivated_list_empty_and_cannot_add) {
    Action outside(log, "x");
    for (char const *name : {"a", "b"}) {
        add(name)->at_end = [&] {
            log += "[" + names() + "]";
            EXPECT_FALSE(list->add(&outside));
        };
    }
    list->setActive(false);
    EXPECT_EQ(take_log(), "~b; []~a; []");
}

TEST_F(UndoInEnd, may_activate_the_list_again) {
    add("a");
    add("b")->at_end = [&] {
        list->setActive(true);
        list->add(new Action(log, "c"));
    };
    list->setActive(false);
    EXPECT_EQ(take_log(), "~b; ~a; ");
    EXPECT_EQ(names(), "c");
}

TEST_F(UndoInEnd, cannot_add_or_undo_while_the_list_is_destroyed) {
    Action outside(log, "x");
    cUndoGlobalList *const dying = list.get();
    Action *const a = add("a");
    add("b")->at_end = [&] {
        EXPECT_FALSE(dying->add(&outside));
        dying->makeUndo(nullptr);
        dying->remove(a);
        EXPECT_EQ(dying->find(nullptr), nullptr);
    };
    list.reset();
    EXPECT_EQ(take_log(), "~b; ~a; ");
}

// A list to which nothing was ever added, such as this copy, accepts actions even then.
TEST_F(UndoInEnd, may_add_to_a_list_being_destroyed_after_activating_it) {
    Action *const a = add("a");
    auto copy = std::make_unique<cUndoGlobalList>(*list);
    list.reset();
    cUndoGlobalList *const dying = copy.get();
    a->at_end = [&, dying] {
        dying->setActive(true);
        for (char const *name : {"b", "c"}) {
            auto *const late = new Action(log, name);
            late->at_end = [dying] { EXPECT_EQ(dying->find(nullptr), nullptr); };
            EXPECT_TRUE(dying->add(late));
        }
    };
    copy.reset();
    EXPECT_EQ(take_log(), "~a; cost b; ~c; ~b; ");
}

TEST_F(UndoInEnd, cannot_add_the_action_being_destroyed) {
    Action *const a = add("a");
    cUndoGlobalList other(false);
    a->at_end = [&] {
        EXPECT_FALSE(list->add(a));
        EXPECT_FALSE(other.add(a));
    };
    list->remove(a);
    EXPECT_EQ(take_log(), "~a; ");
    EXPECT_EQ(names(), "");
    EXPECT_EQ(names(other), "");
}

TEST_F(UndoInEnd, may_remove_others_and_undo_others) {
    Action *const a = add("a");
    add("b");
    Action *const c = add("c");
    c->at_end = [&] {
        list->remove(a);
        list->makeUndo(nullptr);
    };
    list->remove(c);
    EXPECT_EQ(take_log(), "~c; ~a; undo b; ~b; ");
    EXPECT_EQ(names(), "");
}

TEST_F(UndoInEnd, the_oldest_action_may_deactivate_or_destroy_the_list_during_add) {
    for (bool const destroy : {false, true}) {
        add("a", limit)->at_end = [&] {
            if (destroy)
                list.reset();
            else
                list->setActive(false);
        };
        Action outside(log, "b");
        EXPECT_FALSE(list->add(&outside));
        EXPECT_EQ(take_log(), "cost a; ~a; ");
        if (!destroy) list->setActive(true);
    }
}

TEST_F(UndoInEnd, the_oldest_action_may_add_another_when_it_is_removed) {
    add("a", limit)->at_end = [&] { list->add(new Action(log, "x")); };
    list->add(new Action(log, "b"));
    EXPECT_EQ(names(), "bx");
    EXPECT_EQ(take_log(), "cost a; ~a; ");
}

TEST_F(UndoInEnd, an_action_that_ends_after_an_assignment_finds_the_new_entries) {
    cUndoGlobalList other(false);
    add(other, "x");
    add("a")->at_end = [&] { log += "[" + names() + "]"; };
    *list = other;
    EXPECT_EQ(take_log(), "~a; [x]");
}

TEST_F(UndoInEnd, may_destroy_the_list_in_each_operation) {
    Action *a = nullptr;
    auto const fresh = [&] {
        list = std::make_unique<cUndoGlobalList>(true);
        add("b");
        a = add("a");
        a->at_end = [&] { list.reset(); };
    };
    fresh();
    list->remove(a);
    EXPECT_EQ(take_log(), "~a; ~b; ");
    fresh();
    list->makeUndo(nullptr);
    EXPECT_EQ(take_log(), "undo a; ~a; ~b; ");
    fresh();
    list->setActive(false); // b was moved out of the list before
    EXPECT_EQ(take_log(), "~a; ~b; ");
    fresh();
    cUndoGlobalList const other(false);
    *list = other;
    EXPECT_EQ(take_log(), "~a; ~b; ");
}

// ---- exceptions

void fail() { throw std::runtime_error("no"); }

TEST_F(UndoThrow, an_exception_of_undo_keeps_the_action_and_ends_the_walk) {
    add("a");
    add("b")->at_undo = fail;
    for (int i = 0; i < 2; ++i) EXPECT_THROW(list->makeUndo(nullptr), std::runtime_error);
    EXPECT_EQ(take_log(), "undo b; undo b; ");
    EXPECT_EQ(names(), "ba");
}

TEST_F(UndoThrow, an_exception_of_an_action_that_removed_itself_deletes_it) {
    add("a");
    Action *const b = add("b");
    b->at_undo = [&] {
        list->remove(b);
        fail();
    };
    EXPECT_THROW(list->makeUndo(nullptr), std::runtime_error);
    EXPECT_EQ(take_log(), "undo b; ~b; ");
    EXPECT_EQ(names(), "a");
}

TEST_F(UndoThrow, an_exception_of_undo_is_allowed_after_the_list_was_destroyed) {
    add("a");
    add("b")->at_undo = [&] {
        list.reset();
        fail();
    };
    EXPECT_THROW(list->makeUndo(nullptr), std::runtime_error);
    EXPECT_EQ(take_log(), "undo b; ~a; ~b; ");
}

TEST_F(UndoThrow, an_exception_of_isfor_changes_nothing) {
    add("a");
    Action *const b = add("b");
    b->at_isfor = fail;
    EXPECT_THROW(list->find(nullptr), std::runtime_error);
    EXPECT_THROW(list->fIsUndo(nullptr), std::runtime_error);
    b->at_isfor = nullptr;
    EXPECT_EQ(take_log(), "isfor b; isfor b; ");
    EXPECT_EQ(names(), "ba");
}

TEST_F(UndoThrow, an_exception_of_cost_leaves_the_new_action_with_the_caller) {
    Action *const a = add("a");
    a->at_cost = fail;
    {
        Action outside(log, "b");
        EXPECT_THROW(list->add(&outside), std::runtime_error);
        EXPECT_EQ(take_log(), "cost a; ");
    }
    a->at_cost = nullptr;
    EXPECT_EQ(names(), "a");
}

TEST_F(UndoThrow, an_exception_of_cost_is_allowed_after_an_action_was_dropped) {
    add("a", limit);
    Action *const b = add("b"); // a alone was at its limit and was dropped for b
    EXPECT_EQ(names(), "b");
    Action *const c = add("c");
    c->cost(limit);
    b->at_end = [&] { c->at_cost = fail; };
    Action outside(log, "d");
    EXPECT_THROW(list->add(&outside), std::runtime_error);
    EXPECT_EQ(take_log(), "cost c; cost b; ~b; cost c; ");
    EXPECT_EQ(names(), "c");
    c->at_cost = nullptr;
    c->cost(0);
    list->add(new Action(log, "e"));
    EXPECT_EQ(names(), "ec");
}

} // namespace

// Iterators that follow their source: the connection, and every order in which its parts can be
// destroyed.
#include "qrv/containers/citerobj.h"

#include "qrv/containers/csignalobj.h"
#include "tests/containers/choice_support.h"
#include "tests/core/hash_support.h"
#include "tests/support/fixture.h"

#include <memory>
#include <stdexcept>

using namespace choice_test;

namespace {

using followref = cRef<cIterObj>;

followref follow(mapref const &map, char const *key) {
    auto it = make<cIterObj>(map.get(), true);
    it->setkey(key);
    return it;
}

objref slot_of(cIterObj const &it) { return it.omember("updatefromobj"); }

// Logs its updates, and runs an action in them.
class cLogged : public cIterObj {
  public:
    cLogged(objref const &source, std::string &log, char name)
        : cIterObj(&cat::type_iterator()), log_(log), name_(name) {
        take(source->begin());
        follow(*source, "updatefromobj");
    }
    cLogged(cLogged const &) = delete;
    cLogged &operator=(cLogged const &) = delete;
    ~cLogged() override = default;

    bool update() override {
        log_ += name_;
        std::function<void()> const now = action; // may destroy *this
        std::string &log = log_;
        objref const keep = objref::share(this);
        if (now) now();
        bool const result = cIterObj::update();
        log += result ? "+ " : "- ";
        return result;
    }
    void follow_too(cObj &source, char const *member) { follow(source, member); }

    std::function<void()> action;

  private:
    std::string &log_;
    char name_;
};

using loggedref = cRef<cLogged>;

// After a test no emission may be in progress.
class Follow : public QrvTest {
  protected:
    ~Follow() override {
        EXPECT_EQ(cConnection::lock_count(), 0);
        EXPECT_EQ(cConnection::queue_length(), 0u);
        EXPECT_EQ(cConnection::broken_queue_rule(), "");
    }
    loggedref logged(objref const &source, char name) { return make<cLogged>(source, log, name); }

    std::string log;
};

} // namespace

// --- the connection

TEST_F(Follow, a_follower_notices_a_deletion_when_the_source_fires) {
    mapref const map = map_of({"a", "b"});
    followref const it = follow(map, "b"), other = follow(map, "a");
    map->datamap().delitem("b");
    EXPECT_EQ(place(*it), "undefined") << "the position is invalid before the source fires";
    map->changed();
    EXPECT_EQ(place(*it), "lost");
    EXPECT_EQ(place(*other), "a");
    EXPECT_EQ(it->hash(), &map->datamap());
}

TEST_F(Follow, an_update_makes_a_follower_at_the_end_invalid) {
    mapref const map = map_of({"a"});
    followref const it = follow(map, "a");
    it->setpos(-1);
    map->changed();
    EXPECT_EQ(place(*it), "lost");
    map->changed();
    EXPECT_EQ(place(*it), "lost");
}

TEST_F(Follow, an_iterator_that_does_not_follow_has_no_connection) {
    mapref const map = map_of({"a"});
    cIterObj const plain(map.get()), said(map.get(), false);
    EXPECT_FALSE(plain.has_ommap());
    EXPECT_FALSE(said.has_ommap());
    EXPECT_FALSE(map->has_ommap());
    EXPECT_EQ(place(said), "a");
}

TEST_F(Follow, the_source_gets_a_signal_and_all_followers_share_it) {
    mapref const map = map_of({"a"});
    EXPECT_EQ(map->changed_signal(), nullptr);
    followref const one = follow(map, "a");
    cSignal const *const signal = map->changed_signal();
    ASSERT_TRUE(signal);
    followref const two = follow(map, "a");
    EXPECT_EQ(map->changed_signal(), signal);
    EXPECT_EQ(&slot_of(*one)->type(), &cat::type_slot1());
    EXPECT_TRUE(slot_of(*one) != slot_of(*two));
}

TEST_F(Follow, a_member_changed_of_another_type_is_replaced) {
    mapref const map = map_of({"a"});
    map->set_omember("changed", cat::of("text"));
    followref const it = follow(map, "a");
    EXPECT_EQ(&map->omember("changed")->type(), &cat::type_signal());
    map->datamap().delitem("a");
    map->changed();
    EXPECT_EQ(place(*it), "lost");
}

TEST_F(Follow, null_and_objects_without_a_cursor_can_be_followed) {
    cIterObj const none(nullptr, true);
    EXPECT_FALSE(none.has_ommap());
    EXPECT_EQ(none.hash(), nullptr);
    objref const number = cat::of(1);
    cIterObj const it(number.get(), true);
    EXPECT_EQ(it.hash(), nullptr);
    EXPECT_TRUE(slot_of(it) != cat::badfind());
    number->changed();
    EXPECT_EQ(place(it), "lost");
}

TEST_F(Follow, an_iterator_can_follow_another_and_itself) {
    mapref const map = map_of({"a"});
    auto const source = make<cIterObj>(map.get());
    {
        cIterObj const it(source.get(), true);
        EXPECT_EQ(it.hash(), nullptr);
        source->changed();
    }
    loggedref const self = logged(map, 'x');
    self->follow_too(*self, "updatefromobj");
    self->changed();
    EXPECT_EQ(log, "x+ ");
    map->changed();
    EXPECT_EQ(log, "x+ ");
}

TEST_F(Follow, the_update_of_the_subclass_runs) {
    mapref const map = map_of({"a"});
    loggedref const a = logged(map, 'a'), b = logged(map, 'b');
    map->changed();
    EXPECT_EQ(log, "a+ b+ ");
    map->datamap().clear();
    EXPECT_EQ(log, "a+ b+ ");
    map->changed();
    EXPECT_EQ(log, "a+ b+ a- b- ");
}

TEST_F(Follow, removing_the_slot_ends_the_following) {
    mapref const map = map_of({"a"});
    loggedref const it = logged(map, 'a');
    it->set_omember("updatefromobj", cat::badfind());
    map->changed();
    EXPECT_EQ(log, "");
    EXPECT_TRUE(map->changed_signal());
}

TEST_F(Follow, a_slot_with_another_owner_works_until_the_follower_is_destroyed) {
    mapref const map = map_of({"a"});
    loggedref it = logged(map, 'a');
    objref const kept = slot_of(*it);
    it->set_omember("updatefromobj", nullptr);
    map->changed();
    EXPECT_EQ(log, "a+ ");
    it = nullptr;
    map->changed();
    EXPECT_EQ(log, "a+ ");
}

TEST_F(Follow, a_second_source_replaces_the_first) {
    mapref const one = map_of({"a"}), two = map_of({"b"});
    loggedref it = logged(one, 'x');
    objref const kept = slot_of(*it);
    it->follow_too(*two, "other");
    one->changed();
    EXPECT_EQ(log, "");
    two->changed();
    EXPECT_EQ(log, "x+ ");
    it = nullptr;
    one->changed();
    two->changed();
    EXPECT_EQ(log, "x+ ");
}

TEST_F(Follow, copies_do_not_follow) {
    mapref const map = map_of({"a"});
    followref const it = follow(map, "a");
    cIterObj const copy(*it);
    cIterObj assigned;
    assigned = *it;
    map->datamap().delitem("a");
    map->changed();
    EXPECT_EQ(place(*it), "lost");
    EXPECT_EQ(place(copy), "undefined");
    EXPECT_EQ(place(assigned), "undefined");
    EXPECT_FALSE(copy.has_ommap());
}

TEST_F(Follow, a_follower_in_an_attribute_does_not_own_its_source) {
    mapref const map = map_of({"a", "b"}), holder = make<cMapObj>();
    holder->setattr(text("at"), follow(map, "b"));
    map->datamap().delitem("b");
    map->changed();
    EXPECT_EQ(holder->getattr(text("at"))->getattr(text("key")), nullptr);
    holder->setattr(text("at"), cat::badfind());
    map->changed();
    EXPECT_FALSE(map->is_owner_of(*map));
}

// --- destruction outside of emissions

TEST_F(Follow, the_source_is_destroyed_first) {
    mapref map = map_of({"a", "b"});
    followref const it = follow(map, "b");
    map = nullptr;
    EXPECT_EQ(place(*it), "b");
    EXPECT_EQ(it->size(), 2);
    EXPECT_TRUE(it->update());
    EXPECT_TRUE(slot_of(*it) != cat::badfind());
}

TEST_F(Follow, the_follower_is_destroyed_first) {
    mapref const map = map_of({"a"});
    for (int i = 0; i < 3; ++i) {
        followref const it = follow(map, "a");
        map->changed();
    }
    map->changed();
    EXPECT_EQ(map->changed_signal()->begin(), map->changed_signal()->end());
}

TEST_F(Follow, the_signal_is_removed_and_created_again) {
    mapref const map = map_of({"a"});
    loggedref const it = logged(map, 'a');
    map->set_omember("changed", cat::badfind());
    map->changed();
    map->force_changed_signal();
    map->changed();
    EXPECT_EQ(log, "") << "no follower is connected to the new signal";
}

TEST_F(Follow, the_members_of_the_source_are_replaced) {
    mapref map = map_of({"a"});
    loggedref const it = logged(map, 'a');
    hashref const old = map->ommap_ref();
    map->ommap(make<cAttrHash>(nullptr));
    map->changed();
    EXPECT_EQ(log, "");
    map->ommap(old); // replacing fires the new one
    EXPECT_EQ(log, "a+ ");
    map = nullptr;
}

TEST_F(Follow, members_that_outlive_the_follower_have_a_slot_without_effect) {
    mapref const map = map_of({"a"}), members = make<cMapObj>();
    loggedref it = logged(map, 'a');
    hashref const shared = it->ommap_ref();
    it = nullptr;
    objref const slot = shared->getitem("updatefromobj");
    ASSERT_TRUE(slot != cat::badfind());
    map->changed();
    auto *const dead = dynamic_cast<cObjSlot *>(slot.get());
    ASSERT_TRUE(dead);
    map->changed_signal()->connect(*dead);
    map->changed();
    EXPECT_EQ(log, "");
    EXPECT_EQ(dead->function(), nullptr);
}

TEST_F(Follow, another_follower_may_take_over_the_members) {
    mapref const map = map_of({"a"});
    loggedref a = logged(map, 'a'), b = logged(map, 'b');
    b->ommap(a->ommap_ref()); // b's own slot is destroyed, and both share a's slot
    map->changed();
    EXPECT_EQ(log, "a+ ");
    a = nullptr;
    map->changed();
    EXPECT_EQ(log, "a+ ");
}

// A member of the follower fires the source's signal while the follower is being destroyed.
TEST_F(Follow, the_signal_fires_while_the_follower_is_destroyed) {
    mapref const map = map_of({"a"});
    loggedref it = logged(map, 'a');
    it->set_omember("will", make<cOnDestroy>([&] { map->changed(); }));
    it = nullptr;
    EXPECT_EQ(log, "");
}

TEST_F(Follow, the_signal_fires_while_the_source_is_destroyed) {
    mapref map = map_of({"a"});
    loggedref const it = logged(map, 'a');
    cMapObj *const address = map.get();
    map->set_omember("will", make<cOnDestroy>([address] { address->changed(); }));
    map = nullptr;
    EXPECT_EQ(log, "a+ ");
    EXPECT_EQ(place(*it), "a");
}

// --- destruction inside of emissions

TEST_F(Follow, a_follower_may_be_destroyed_in_its_own_update) {
    mapref const map = map_of({"a"});
    loggedref a = logged(map, 'a'), b = logged(map, 'b'), c = logged(map, 'c');
    b->action = [&] { b = nullptr; };
    map->changed();
    EXPECT_EQ(log, "a+ b+ c+ ");
    map->changed();
    EXPECT_EQ(log, "a+ b+ c+ a+ c+ ");
}

TEST_F(Follow, a_follower_may_destroy_those_before_and_after_it) {
    mapref const map = map_of({"a"});
    loggedref a = logged(map, 'a'), b = logged(map, 'b'), c = logged(map, 'c'),
              d = logged(map, 'd');
    b->action = [&] { a = c = nullptr; };
    map->changed();
    EXPECT_EQ(log, "a+ b+ d+ ");
    b->action = nullptr;
    map->changed();
    EXPECT_EQ(log, "a+ b+ d+ b+ d+ ");
}

TEST_F(Follow, all_followers_may_be_destroyed_in_the_last_update) {
    mapref const map = map_of({"a"});
    loggedref a = logged(map, 'a'), b = logged(map, 'b');
    b->action = [&] { a = b = nullptr; };
    map->changed();
    EXPECT_EQ(log, "a+ b+ ");
    map->changed();
    EXPECT_EQ(log, "a+ b+ ");
}

TEST_F(Follow, the_source_may_be_destroyed_in_an_update) {
    mapref map = map_of({"a"});
    loggedref const a = logged(map, 'a'), b = logged(map, 'b');
    a->action = [&] { map = nullptr; };
    map->changed();
    EXPECT_EQ(log, "a+ ") << "a destroyed signal calls no later follower";
    EXPECT_EQ(place(*b), "a");
}

TEST_F(Follow, source_and_followers_may_be_destroyed_in_an_update) {
    mapref map = map_of({"a"});
    loggedref a = logged(map, 'a'), b = logged(map, 'b');
    a->action = [&] {
        map = nullptr;
        a = b = nullptr;
    };
    map->changed();
    EXPECT_EQ(log, "a+ ");
    log.clear();
    map = map_of({"a"});
    a = logged(map, 'a'), b = logged(map, 'b');
    b->action = [&] {
        a = b = nullptr;
        map = nullptr;
    };
    map->changed();
    EXPECT_EQ(log, "a+ b+ ");
}

TEST_F(Follow, the_signal_is_replaced_in_an_update) {
    mapref const map = map_of({"a"});
    loggedref const a = logged(map, 'a'), b = logged(map, 'b');
    a->action = [&] {
        a->action = nullptr;
        map->set_omember("changed", make<cSignalObj>());
    };
    map->changed();
    EXPECT_EQ(log, "a+ ");
    map->changed();
    EXPECT_EQ(log, "a+ ");
}

TEST_F(Follow, the_slot_may_be_removed_in_its_own_call) {
    mapref const map = map_of({"a"});
    loggedref const a = logged(map, 'a'), b = logged(map, 'b');
    a->action = [&] { a->set_omember("updatefromobj", nullptr); };
    map->changed();
    map->changed();
    EXPECT_EQ(log, "a+ b+ b+ ");
}

TEST_F(Follow, a_follower_changes_the_source_in_its_update) {
    mapref const map = map_of({"a", "b", "c"});
    loggedref const a = logged(map, 'a'), b = logged(map, 'b');
    b->setkey("c");
    a->action = [&] {
        map->datamap().delitem("c");
        for (int i = 0; i < 200; ++i) map->setattr(own_key(i), cat::of(i)); // grows the table
    };
    map->changed();
    EXPECT_EQ(log, "a+ b- ");
    EXPECT_EQ(place(*a), "a");
    EXPECT_EQ(place(*b), "lost");
    a->action = [&] { map->clear(); };
    map->changed();
    EXPECT_EQ(log, "a+ b- a- b- ");
    EXPECT_EQ(a->size(), 0);
}

TEST_F(Follow, a_follower_may_fire_again_in_its_update) {
    mapref const map = map_of({"a"});
    loggedref const a = logged(map, 'a'), b = logged(map, 'b');
    int left = 2;
    a->action = [&] {
        if (left-- > 0) map->changed();
    };
    map->changed();
    EXPECT_EQ(log, "aaa+ b+ + b+ + b+ ");
}

TEST_F(Follow, a_new_follower_may_connect_in_an_update) {
    mapref const map = map_of({"a"});
    loggedref const a = logged(map, 'a');
    loggedref joined;
    a->action = [&] {
        if (!joined) joined = logged(map, 'n');
    };
    map->changed();
    EXPECT_EQ(log, "a+ n+ ");
    map->changed();
    EXPECT_EQ(log, "a+ n+ a+ n+ ");
}

TEST_F(Follow, an_exception_in_an_update_is_passed_on) {
    mapref const map = map_of({"a"});
    loggedref const a = logged(map, 'a'), b = logged(map, 'b');
    a->action = [] { throw std::runtime_error("no"); };
    EXPECT_THROW(map->changed(), std::runtime_error);
    EXPECT_EQ(log, "a");
    a->action = nullptr;
    map->changed();
    EXPECT_EQ(log, "aa+ b+ ");
}

TEST_F(Follow, an_exception_while_the_iterator_is_created_leaves_no_connection) {
    auto const map = make<cActingMap>(*map_of({"a"}));
    map->action = [] { throw std::runtime_error("no"); };
    EXPECT_THROW(cIterObj const it(map.get(), true), std::runtime_error);
    EXPECT_EQ(map->changed_signal(), nullptr);
    cIterObj const it(map.get(), true);
    EXPECT_EQ(place(it), "a");
}

TEST_F(Follow, an_exception_of_the_follower_s_own_signal_leaves_no_connection) {
    struct cThrowing : cIterObj {
        explicit cThrowing(cObj &source) : cIterObj(&cat::type_iterator()) {
            cAction const act([] { throw std::runtime_error("no"); }, &force_changed_signal());
            follow(source, "updatefromobj"); // storing the slot fires the own signal
        }
        cThrowing(cThrowing const &) = delete;
        cThrowing &operator=(cThrowing const &) = delete;
        ~cThrowing() override = default;
    };
    mapref const map = map_of({"a"});
    EXPECT_THROW(objref const it = make<cThrowing>(*map), std::runtime_error);
    map->changed();
    EXPECT_EQ(map->changed_signal(), nullptr);
}

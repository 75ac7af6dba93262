// Destruction of slots, signals, targets and objects before, during and after an emission, in each
// order; and slots that change the signal that calls them.
#include "tests/containers/signal_objects.h"

#include <memory>
#include <stdexcept>
#include <vector>

namespace {

class Life : public SignalObjTest {
  protected:
    Life() : obj(cat::of(1)) { connect(obj->force_changed_signal()); }

    void connect(cSignal const &signal) {
        for (auto const *slot : {&a, &b, &c}) signal.connect(**slot);
    }
    // The calls of an emission in which b runs this action, and of the next emission.
    std::string fire(std::function<void()> what) {
        plans["b"] = std::move(what);
        obj->changed();
        plans.clear();
        std::string const during = take_calls();
        if (obj) obj->changed();
        return during + " then " + take_calls();
    }

    NamedSlot a{"a"}, b{"b"}, c{"c"};
    objref obj;
};

} // namespace

TEST_F(Life, a_slot_destroyed_during_the_call) {
    EXPECT_EQ(fire([this] { a.destroy(); }), "a;b;c; then b;c;");
    EXPECT_EQ(fire([this] { b.destroy(); }), "b;c; then c;");
}

TEST_F(Life, a_later_slot_destroyed_during_the_call_is_not_called) {
    EXPECT_EQ(fire([this] { c.destroy(); }), "a;b; then a;b;");
}

TEST_F(Life, all_slots_destroyed_during_the_call) {
    EXPECT_EQ(fire([this] {
                  c.destroy();
                  a.destroy();
                  b.destroy();
              }),
              "a;b; then ");
}

TEST_F(Life, the_member_removed_during_the_call_calls_no_later_slot) {
    EXPECT_EQ(fire([this] { obj->set_omember("changed", objref()); }), "a;b; then ");
    EXPECT_FALSE(a->cSSBase::isconnected());
    EXPECT_FALSE(c->cSSBase::isconnected());
}

TEST_F(Life, a_removed_signal_with_another_owner_calls_the_rest) {
    objref held = changed_object(*obj);
    EXPECT_EQ(fire([this] { obj->set_omember("changed", objref()); }), "a;b;c; then ");
    EXPECT_TRUE(a->cSSBase::isconnected());
    held = nullptr;
    EXPECT_FALSE(a->cSSBase::isconnected());
}

TEST_F(Life, the_member_replaced_during_the_call) {
    EXPECT_EQ(fire([this] { obj->set_omember("changed", make<cSignalObj>()); }), "a;b; then ");
    EXPECT_NE(obj->changed_signal(), nullptr);
    EXPECT_FALSE(obj->changed_signal()->isconnected());
}

TEST_F(Life, the_member_replaced_by_a_signal_that_reaches_the_same_slots) {
    cRef<cSignalObj> const next = make<cSignalObj>();
    next->signal().connect(*b);
    next->signal().connect(*c);
    EXPECT_EQ(fire([&] {
                  plans.clear();
                  obj->set_omember("changed", next);
              }),
              "a;b;b;c; then b;c;");
}

TEST_F(Life, the_member_map_replaced_during_the_call) {
    EXPECT_EQ(fire([this] { obj->ommap(hashref()); }), "a;b; then ");
    EXPECT_FALSE(obj->has_ommap());
}

TEST_F(Life, the_member_map_replaced_by_one_with_a_signal_fires_that_one) {
    objref const donor = cat::of(2);
    donor->force_changed_signal().connect(*c);
    EXPECT_EQ(fire([&] { obj->ommap(donor->ommap_ref()); }), "a;b;c; then c;");
}

TEST_F(Life, the_member_map_cleared_during_the_call) {
    EXPECT_EQ(fire([this] { obj->ommap().clear(); }), "a;b; then ");
}

TEST_F(Life, the_object_destroyed_during_the_call) {
    EXPECT_EQ(fire([this] { obj = nullptr; }), "a;b; then ");
    EXPECT_FALSE(c->cSSBase::isconnected());
}

TEST_F(Life, the_object_destroyed_while_set_omember_fires) {
    plans["b"] = [this] { obj = nullptr; };
    EXPECT_TRUE(obj->set_omember("k", cat::of(1)));
    EXPECT_EQ(take_calls(), "a;b;");
}

TEST_F(Life, the_object_destroyed_while_its_member_map_is_replaced) {
    objref const donor = cat::of(2);
    connect(donor->force_changed_signal());
    plans["b"] = [this] { obj = nullptr; };
    obj->ommap(donor->ommap_ref());
    EXPECT_EQ(take_calls(), "a;b;c;");
    obj = cat::of(3);
    cRef<cMapObj> const map = make<cMapObj>(donor->ommap_ref());
    obj->ommap(*map);
    EXPECT_EQ(take_calls(), "a;b;c;");
    EXPECT_FALSE(obj);
}

TEST_F(Life, the_object_destroyed_while_it_is_called_by_name) {
    plans["b"] = [this] { obj = nullptr; };
    EXPECT_TRUE(obj->call("changed") == cat::nil());
    EXPECT_EQ(take_calls(), "a;b;c;"); // a call holds its target
}

TEST_F(Life, the_object_and_all_slots_destroyed_during_the_call) {
    EXPECT_EQ(fire([this] {
                  b.destroy();
                  obj = nullptr;
                  a.destroy();
                  c.destroy();
              }),
              "a;b; then ");
}

TEST_F(Life, destroyed_and_thrown_in_the_same_call) {
    plans["b"] = [this] {
        obj = nullptr;
        b.destroy();
        throw std::runtime_error("b");
    };
    EXPECT_THROW(obj->changed(), std::runtime_error);
    EXPECT_EQ(cConnection::lock_count(), 0);
    EXPECT_EQ(cConnection::queue_length(), 0u);
    EXPECT_EQ(take_calls(), "a;b;");
}

TEST_F(Life, thrown_while_set_omember_has_lost_its_object) {
    plans["b"] = [this] {
        obj = nullptr;
        throw std::runtime_error("b");
    };
    EXPECT_THROW(obj->set_omember("k", cat::of(1)), std::runtime_error);
    EXPECT_FALSE(obj);
}

TEST_F(Life, a_slot_connected_during_the_call_is_reached) {
    NamedSlot const d("d");
    EXPECT_EQ(fire([&] { obj->force_changed_signal().connect(*d); }), "a;b;c;d; then a;b;c;d;");
}

TEST_F(Life, a_slot_fires_again_from_inside) {
    int left = 2;
    EXPECT_EQ(fire([&] {
                  if (left-- > 0) obj->changed();
              }),
              "a;b;a;b;a;b;c;c;c; then a;b;c;");
    obj->changed_signal()->blockoncall(true);
    EXPECT_EQ(fire([this] { obj->changed(); }), "a;b;c; then a;b;c;");
}

TEST_F(Life, a_slot_that_sets_members_of_a_signal_blocked_on_call_fires_once) {
    obj->changed_signal()->blockoncall(true);
    EXPECT_EQ(fire([this] { obj->set_omember("seen", cat::of(1)); }), "a;b;c; then a;b;c;");
    EXPECT_TRUE(cat::is_equal(obj->omember("seen"), 1));
}

TEST_F(Life, the_inner_emission_destroys_the_object_of_the_outer_one) {
    int depth = 0;
    plans["b"] = [&] {
        if (++depth < 3)
            obj->changed();
        else
            obj = nullptr;
    };
    obj->changed();
    EXPECT_EQ(take_calls(), "a;b;a;b;a;b;");
}

TEST_F(Life, forcing_during_the_call_returns_the_firing_signal) {
    EXPECT_EQ(fire([this] {
                  EXPECT_EQ(&obj->force_changed_signal(), obj->changed_signal());
                  obj->set_omember("changed", objref());
                  obj->force_changed_signal().connect(*b);
              }),
              "a;b; then b;");
}

TEST_F(Life, a_chain_of_objects_passes_the_change_on) {
    objref const next = cat::of(2);
    NamedSlot const d("d", next->force_changed_signal());
    obj->changed_signal()->connect(*next->changed_signal());
    obj->changed();
    EXPECT_EQ(take_calls(), "a;b;c;d;");
    EXPECT_EQ(fire([&] { next->ommap(hashref()); }), "a;b;c; then a;b;c;");
}

// --- outside of an emission

TEST(SignalObjOrder, slot_and_signal_can_be_destroyed_in_either_order) {
    calls.clear();
    objref const target = cat::of("t");
    for (bool slot_first : {false, true}) {
        auto signal = make<cSignalObj>();
        auto slot = make<cObjSlot>(*target, note, signal->signal());
        auto signal1 = make<cSignalObj1>(true);
        auto slot1 = make<cObjSlot1>(*target, note_argument, signal1->signal());
        if (slot_first) {
            slot = nullptr;
            slot1 = nullptr;
            EXPECT_FALSE(signal->signal().isconnected());
            EXPECT_FALSE(signal1->signal().isconnected());
            signal->signal()();
            signal1->signal()(*target);
        } else {
            signal = nullptr;
            signal1 = nullptr;
            EXPECT_FALSE(slot->isconnected());
            EXPECT_FALSE(slot1->isconnected());
        }
    }
    EXPECT_EQ(calls, "");
    EXPECT_EQ(cConnection::queue_length(), 0u);
}

TEST_F(Life, the_object_can_be_destroyed_before_and_after_its_slots) {
    obj = nullptr;
    EXPECT_FALSE(a->cSSBase::isconnected());
    (*a)();
    EXPECT_EQ(take_calls(), "a;");
    obj = cat::of(2);
    connect(obj->force_changed_signal());
    a.destroy();
    b.destroy();
    c.destroy();
    obj->changed();
    EXPECT_EQ(take_calls(), "");
}

namespace {

// An object that owns the slot that calls it. The slot does not count it, so there is no cycle.
class cFollower : public cObjD<std::string> {
  public:
    cFollower(std::string const &name, cSignal const &signal)
        : cObjD<std::string>(name), slot_(make<cObjSlot>(*this, note, signal)) {}
    cFollower(cFollower const &) = delete;
    cFollower &operator=(cFollower const &) = delete;
    ~cFollower() override { calls += "~" + val() + ";"; }

  private:
    cRef<cObjSlot> slot_;
};

} // namespace

TEST_F(Life, a_target_that_owns_its_slot_is_destroyed_with_it) {
    objref follower = make<cFollower>("f", *obj->changed_signal());
    EXPECT_EQ(follower->refs(), 1u);
    obj->changed();
    EXPECT_EQ(take_calls(), "a;b;c;f;");
    follower = nullptr;
    obj->changed();
    EXPECT_EQ(take_calls(), "~f;a;b;c;");
}

TEST_F(Life, an_earlier_slot_may_destroy_a_target) {
    objref follower = make<cFollower>("f", *obj->changed_signal());
    EXPECT_EQ(fire([&] { follower = nullptr; }), "a;b;~f;c; then a;b;c;");
}

TEST_F(Life, a_slot_may_destroy_its_target) {
    objref follower = make<cFollower>("f", *obj->changed_signal());
    plans["f"] = [&] { follower = nullptr; };
    obj->changed();
    EXPECT_EQ(take_calls(), "a;b;c;f;~f;");
    obj->changed();
    EXPECT_EQ(take_calls(), "a;b;c;");
}

TEST_F(Life, a_target_and_the_object_are_destroyed_by_the_slot_in_either_order) {
    for (bool object_first : {false, true}) {
        obj = cat::of(1);
        objref follower = make<cFollower>("f", obj->force_changed_signal());
        connect(*obj->changed_signal());
        plans["f"] = [&] {
            if (object_first) obj = nullptr;
            follower = nullptr;
            obj = nullptr;
        };
        obj->changed();
        EXPECT_EQ(take_calls(), "f;~f;");
    }
}

TEST_F(Life, an_object_that_follows_itself_creates_no_cycle) {
    {
        objref const self = make<cFollower>("self", *obj->changed_signal());
        auto const &slot = self->omember("slot");
        EXPECT_TRUE(slot == cat::badfind());
        self->set_omember("slot", make<cObjSlot>(*self, note, self->force_changed_signal()));
        take_calls();
        self->changed();
        EXPECT_EQ(take_calls(), "self;");
    }
    EXPECT_EQ(take_calls(), "~self;");
}

TEST_F(Life, a_slot_removes_itself_from_the_members_of_its_target) {
    objref const self = cat::of("self");
    self->set_omember("slot", make<cObjSlot>(*self, note, self->force_changed_signal()));
    take_calls();
    plans["self"] = [&] {
        plans.clear();
        self->set_omember("slot", objref()); // fires again, with no slot left
    };
    self->changed();
    self->changed();
    EXPECT_EQ(take_calls(), "self;");
}

TEST_F(Life, the_values_of_a_replaced_member_are_released_before_the_firing) {
    objref const donor = cat::of(2);
    NamedSlot const d("d", donor->force_changed_signal());
    objref const target = cat::of("old");
    obj->set_omember("slot", make<cObjSlot>(*target, note, *donor->changed_signal()));
    take_calls();
    obj->ommap(donor->ommap_ref()); // the slot in the old map is not called any more
    EXPECT_EQ(take_calls(), "d;");
    donor->set_omember("slot", make<cObjSlot>(*target, note, *donor->changed_signal()));
    EXPECT_EQ(take_calls(), "d;old;");
    donor->set_omember("slot", cat::of(1));
    EXPECT_EQ(take_calls(), "d;");
}

namespace {

// Releases the last owner of an object in its destructor.
class cLastOwner : public cObjD<int> {
  public:
    explicit cLastOwner(objref &owner) : owner_(&owner) {}
    cLastOwner(cLastOwner const &) = delete;
    cLastOwner &operator=(cLastOwner const &) = delete;
    ~cLastOwner() override { *owner_ = nullptr; }

  private:
    objref *owner_;
};

} // namespace

TEST_F(Life, an_object_destroyed_with_its_old_member_fires_nothing) {
    obj->set_omember("k", objref::adopt(new cLastOwner(obj)));
    take_calls();
    EXPECT_TRUE(obj->set_omember("k", cat::of(1)));
    EXPECT_FALSE(obj);
    EXPECT_EQ(take_calls(), "");
}

TEST_F(Life, an_object_destroyed_with_its_old_member_map_fires_nothing) {
    objref const donor = cat::of(2);
    connect(donor->force_changed_signal());
    cRef<cMapObj> const map = make<cMapObj>(donor->ommap_ref());
    for (bool by_map : {false, true}) {
        obj = cat::of(1);
        obj->set_omember("k", objref::adopt(new cLastOwner(obj)));
        if (by_map)
            obj->ommap(*map);
        else
            obj->ommap(donor->ommap_ref());
        EXPECT_FALSE(obj);
        EXPECT_EQ(take_calls(), "");
    }
}

TEST_F(Life, an_object_on_the_stack_can_be_observed) {
    cObjD<int> local(1);
    connect(local.force_changed_signal());
    local.set_omember("k", cat::of(2));
    EXPECT_EQ(local.refs(), 1u);
    EXPECT_EQ(take_calls(), "a;b;c;");
    local.ommap(hashref());
    EXPECT_EQ(local.refs(), 1u);
    EXPECT_EQ(take_calls(), "");
}

TEST_F(Life, all_parts_may_be_destroyed_during_the_call_of_a_slot_with_an_argument) {
    auto signal = make<cSignalObj1>(false);
    objref const target = cat::of("x"), after = cat::of("y");
    auto first = make<cObjSlot1>(*target, note_argument, signal->signal());
    auto second = make<cObjSlot1>(*after, note_argument, signal->signal());
    cSignalRef1 copy(*signal);
    objref const argument = cat::of(5);
    plans["x"] = [&] { second = nullptr; };
    EXPECT_TRUE(copy.pexecute(*argument));
    EXPECT_EQ(take_calls(), "x(5);");
    second = make<cObjSlot1>(*after, note_argument, signal->signal());
    plans["x"] = [&] { first = nullptr; };
    EXPECT_TRUE(copy.pexecute(*argument));
    EXPECT_EQ(take_calls(), "x(5);y(5);");
    plans["y"] = [&] { signal = nullptr; }; // the signal of `copy`, which is not used any more
    EXPECT_TRUE(copy.pexecute(*argument));
    EXPECT_EQ(take_calls(), "y(5);");
    EXPECT_FALSE(second->isconnected());
    EXPECT_EQ(argument->refs(), 1u);
}

TEST_F(Life, a_slot_with_an_argument_that_throws_releases_its_reference) {
    auto const signal = make<cSignalObj1>(true);
    objref const target = cat::of("x"), owner = cat::of(5);
    auto const slot = make<cObjSlot1>(*target, note_argument, signal->signal());
    owner->set_omember("hit", signal);
    plans["x"] = [] { throw std::runtime_error("x"); };
    EXPECT_THROW((void)owner->call("hit"), std::runtime_error);
    EXPECT_EQ(owner->refs(), 1u);
    EXPECT_EQ(cConnection::lock_count(), 0);
    plans.clear();
    EXPECT_TRUE(owner->call("hit") == cat::nil());
    EXPECT_EQ(take_calls(), "x(5);x(5);");
}

// --- random changes

TEST_F(Life, random_changes_from_inside_keep_rings_and_counts_valid) {
    unsigned int state = 12345;
    auto const random = [&state](unsigned int limit) {
        state = state * 1664525u + 1013904223u;
        return (state >> 16) % limit;
    };
    std::vector<objref> objects(6);
    std::vector<std::unique_ptr<NamedSlot>> slots(8);
    int budget = 0;
    std::function<void()> const act = [&] {
        if (--budget < 0) return;
        objref &object = objects[random(6)];
        auto &slot = slots[random(8)];
        switch (random(9)) {
        case 0:
            object = nullptr;
            break;
        case 1:
            object = cat::of(1);
            break;
        case 2:
            slot = nullptr;
            break;
        case 3:
            slot = std::make_unique<NamedSlot>("r");
            break;
        case 4:
        case 5:
            if (object && slot) object->force_changed_signal().connect(**slot);
            break;
        case 6:
            if (object) object->changed();
            break;
        case 7:
            if (object) object->set_omember(random(4) ? "k" : "changed", cat::of(1));
            break;
        default:
            if (object && objects[0] && objects[0]->has_ommap())
                object->ommap(objects[0]->ommap_ref());
        }
    };
    plans["r"] = act;
    for (int round = 0; round < 3000; ++round) {
        budget = 20;
        act();
        ASSERT_EQ(cConnection::broken_queue_rule(), "");
        ASSERT_EQ(cConnection::lock_count(), 0);
        for (auto const &slot : slots)
            if (slot) {
                ASSERT_EQ((**slot).broken_rule(true), "");
            }
    }
    EXPECT_FALSE(take_calls().empty());
}

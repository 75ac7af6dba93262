// The signal `changed` of an object: when it exists, what fires it, and the state at that moment.
#include "tests/containers/signal_objects.h"

#include "qrv/containers/cvectorobj.h"
#include "tests/support/objects.h"

#include <stdexcept>

namespace {

class ChangedEdge : public SignalObjTest {};
class Changed : public SignalObjTest {};

using test::key;

bool bad_assign(cObj &) { return true; }

} // namespace

TEST_F(ChangedEdge, changed_on_an_unobserved_object_has_no_effect) {
    objref const obj = cat::of(1), other = cat::of(2);
    other->set_omember("k", cat::of(3));
    auto const before = cObjBase::ob_count();
    for (objref const &each : {obj, other}) {
        each->changed();
        EXPECT_EQ(each->changed_signal(), nullptr);
    }
    EXPECT_FALSE(obj->has_ommap());
    EXPECT_FALSE(obj->flags_of(of_exe_member));
    EXPECT_EQ(other->ommap().used(), 1u);
    EXPECT_EQ(cObjBase::ob_count(), before);
}

TEST_F(ChangedEdge, a_member_of_another_type_is_not_a_signal_and_is_replaced_by_force) {
    objref const obj = cat::of(1);
    obj->set_omember("changed", cat::of("text"));
    EXPECT_EQ(obj->changed_signal(), nullptr);
    obj->changed();
    EXPECT_EQ(cat::as_string(changed_object(*obj)), "text");
    cSignal &signal = obj->force_changed_signal();
    EXPECT_EQ(obj->changed_signal(), &signal);
    EXPECT_EQ(&changed_object(*obj)->type(), &cat::type_signal());
    EXPECT_EQ(obj->ommap().used(), 1u);
}

TEST_F(ChangedEdge, a_second_force_returns_the_same_signal) {
    objref const obj = cat::of(1);
    cSignal &signal = obj->force_changed_signal();
    EXPECT_EQ(&obj->force_changed_signal(), &signal);
    EXPECT_EQ(obj->changed_signal(), &signal);
    NamedSlot const a("a", signal);
    obj->changed();
    EXPECT_EQ(take_calls(), "a;");
}

TEST_F(ChangedEdge, replacing_the_member_map_fires_the_signal_of_the_new_one) {
    objref const obj = cat::of(1), donor = cat::of(2);
    NamedSlot const old("old", obj->force_changed_signal());
    NamedSlot const fresh("fresh", donor->force_changed_signal());
    take_calls();
    obj->ommap(donor->ommap_ref());
    EXPECT_EQ(take_calls(), "fresh;");
    obj->ommap(make<cAttrHash>(nullptr));
    EXPECT_EQ(take_calls(), "");
    obj->ommap(donor->ommap_ref());
    obj->ommap(hashref());
    EXPECT_EQ(take_calls(), "fresh;");
}

TEST_F(Changed, replacing_the_members_by_a_map_fires_the_signal_in_the_map) {
    objref const obj = cat::of(1);
    NamedSlot const old("old", obj->force_changed_signal());
    cRef<cMapObj> const map = make<cMapObj>();
    cAttr attr = (*map)["changed"];
    NamedSlot const fresh("fresh", cSignalRef::force(attr));
    obj->ommap(*map);
    EXPECT_EQ(take_calls(), "fresh;");
    EXPECT_EQ(obj->ommap().father(), map.get());
    obj->changed();
    map->changed(); // the map has no own members
    EXPECT_EQ(take_calls(), "fresh;");
    obj->ommap(*make<cMapObj>());
    EXPECT_EQ(take_calls(), "");
}

TEST_F(Changed, the_new_state_is_complete_when_the_new_map_fires) {
    objref const obj = cat::of(1);
    hashref const hash = make<cAttrHash>(nullptr);
    cRef<cSignalObj> const signal = make<cSignalObj>();
    hash->mapitem("changed", signal);
    NamedSlot const a("a", signal->signal());
    plans["a"] = [&] {
        EXPECT_EQ(obj->ommap_ptr(), hash.get());
        EXPECT_EQ(hash->father(), obj.get());
    };
    obj->ommap(hash);
    EXPECT_EQ(take_calls(), "a;");
}

TEST_F(Changed, set_omember_fires_after_storing_the_member) {
    objref const obj = cat::of(1);
    NamedSlot const a("a", obj->force_changed_signal());
    plans["a"] = [&] { calls += cat::as_text(obj->omember("k")) + ";"; };
    EXPECT_TRUE(obj->set_omember("k", cat::of(7)));
    EXPECT_EQ(take_calls(), "a;7;");
    EXPECT_TRUE(obj->set_omember("k", cat::of(8)));
    EXPECT_EQ(take_calls(), "a;8;");
    EXPECT_TRUE(obj->set_omember("k", objref()));
    EXPECT_EQ(take_calls(), "a;" + cat::as_text(cat::badfind()) + ";");
    EXPECT_TRUE(obj->set_omember("k", cat::badfind())); // fires although the member does not exist
    EXPECT_EQ(take_calls(), "a;" + cat::as_text(cat::badfind()) + ";");
    EXPECT_FALSE(obj->set_omember("k", cat::bad())); // fires although nothing is stored
    EXPECT_EQ(take_calls(), "a;" + cat::as_text(cat::badfind()) + ";");
    EXPECT_TRUE(obj->set_comment("text", true)); // a comment is a member
    EXPECT_EQ(take_calls(), "a;" + cat::as_text(cat::badfind()) + ";");
}

TEST_F(Changed, a_refused_executable_fires_nothing) {
    cErrorLog errors;
    objref const obj = cat::of(1);
    NamedSlot const a("a", obj->force_changed_signal());
    EXPECT_FALSE(obj->set_omember("k", make<cExeGlobal>(bad_assign)));
    EXPECT_FALSE(obj->set_omember("assign", make<cExeMember>(bad_assign)));
    EXPECT_EQ(
        errors.text(),
        "0x44000000 Attr value, type 'int': Inserted executable, key 'k', must be cExeMember\n"
        "0x50000000 Standard method 'assign'  has bad prototype in object type: int\n");
    EXPECT_EQ(take_calls(), "");
}

TEST_F(Changed, removing_a_missing_member_creates_no_member_map) {
    objref const obj = cat::of(1);
    EXPECT_TRUE(obj->set_omember("changed", objref()));
    EXPECT_FALSE(obj->has_ommap());
}

TEST_F(Changed, a_signal_that_is_set_fires_itself_at_once) {
    objref const obj = cat::of(1);
    cRef<cSignalObj> const signal = make<cSignalObj>();
    NamedSlot const a("a", signal->signal());
    EXPECT_TRUE(obj->set_omember("changed", signal));
    EXPECT_EQ(take_calls(), "a;");
    EXPECT_TRUE(obj->set_omember("changed", objref()));
    EXPECT_EQ(take_calls(), "");
    EXPECT_EQ(obj->changed_signal(), nullptr);
    EXPECT_FALSE(obj->has_ommap());
}

TEST_F(Changed, a_reference_to_an_outside_signal_works_too) {
    cSignal outside;
    objref const obj = cat::of(1);
    NamedSlot const a("a", outside);
    obj->set_omember("changed", make<cSignalRef>(outside));
    EXPECT_EQ(take_calls(), "a;");
    EXPECT_EQ(obj->changed_signal(), &outside);
    EXPECT_EQ(&obj->force_changed_signal(), &outside);
    obj->changed();
    EXPECT_EQ(take_calls(), "a;");
}

TEST_F(Changed, a_signal_with_an_argument_is_not_used) {
    objref const obj = cat::of(1), target = cat::of("t");
    cRef<cSignalObj1> const one = make<cSignalObj1>(true);
    cObjSlot1 const slot(*target, note_argument, one->signal());
    obj->set_omember("changed", one);
    obj->changed();
    EXPECT_EQ(obj->changed_signal(), nullptr);
    EXPECT_EQ(take_calls(), "");
    EXPECT_TRUE(obj->call("changed") == cat::nil()); // but it can be called
    EXPECT_EQ(take_calls(), "t(1);");
}

TEST_F(Changed, a_member_that_only_claims_the_type_is_not_used) {
    objref const obj = cat::of(1), no_signal = cat::of("x");
    obj->set_omember("changed", no_signal);
    no_signal->set_type(&cat::type_signal());
    EXPECT_EQ(obj->changed_signal(), nullptr);
    obj->changed();
    no_signal->set_type(nullptr);
    EXPECT_EQ(obj->changed_signal(), nullptr);
    no_signal->set_type(&cat::type_string());
    cRef<cSignalObj> const hidden = make<cSignalObj>(); // the class without the type
    obj->set_omember("changed", hidden);
    hidden->set_type(&cat::type_exe());
    EXPECT_EQ(obj->changed_signal(), nullptr);
    hidden->set_type(&cat::type_signal());
    EXPECT_EQ(obj->changed_signal(), &hidden->signal());
}

TEST_F(Changed, a_null_or_nil_member_is_not_used) {
    objref const obj = cat::of(1);
    obj->set_omember("k", cat::of(1));
    obj->ommap().insert(key("changed"), objref(), nullptr);
    EXPECT_EQ(obj->changed_signal(), nullptr);
    obj->ommap().insert(key("changed"), cat::nil(), nullptr);
    EXPECT_EQ(obj->changed_signal(), nullptr);
    obj->changed();
    cSignal const &signal = obj->force_changed_signal();
    EXPECT_EQ(obj->changed_signal(), &signal);
}

TEST_F(Changed, it_is_found_among_keys_of_other_types) {
    objref const obj = cat::of(1);
    cSignal &signal = obj->force_changed_signal();
    for (int i = 0; i < 300; ++i) obj->set_omember(own_key(i), cat::of(i));
    obj->set_omember(objref(make<cObjD<double>>(0.5)), cat::of(1));
    EXPECT_EQ(obj->changed_signal(), &signal);
}

TEST_F(Changed, two_objects_over_one_map_share_the_signal) {
    objref const a = cat::of(1), b = cat::of(2);
    NamedSlot const slot("s", a->force_changed_signal());
    b->ommap(a->ommap_ref());
    EXPECT_EQ(take_calls(), "s;");
    EXPECT_EQ(b->changed_signal(), a->changed_signal());
    b->set_omember("k", cat::of(1));
    EXPECT_EQ(take_calls(), "s;");
    a->ommap(hashref());
    b->changed();
    EXPECT_EQ(take_calls(), "s;");
}

TEST_F(Changed, ordinary_attributes_do_not_fire_the_signal_and_do_not_contain_it) {
    objref const map = make<cMapObj>();
    NamedSlot const a("a", map->force_changed_signal());
    (*map)["k"] = cat::of(1);
    EXPECT_EQ(take_calls(), "");
    EXPECT_TRUE(map->getattr(key("changed")) == cat::badfind());
    EXPECT_EQ(cat::as_text(map), "{\n  k= 1;\n}");
    map->changed();
    EXPECT_EQ(take_calls(), "a;");
}

TEST_F(Changed, forcing_sets_the_flag_of_executables_and_methods_still_work) {
    objref const obj = cat::of(1), vector = make<cVectorObj>();
    obj->force_changed_signal();
    EXPECT_TRUE(obj->flags_of(of_exe_member));
    EXPECT_TRUE(obj->assign(*cat::of(5)));
    EXPECT_TRUE(cat::is_equal(obj, 5));
    vector->force_changed_signal();
    EXPECT_TRUE(vector->append(cat::of(1)));
    EXPECT_EQ(cat::as_text(vector), "[1, ]");
}

TEST_F(Changed, firing_of_const_objects_and_constants) {
    cObj const &nil = *cat::nil();
    nil.changed();
    EXPECT_EQ(nil.changed_signal(), nullptr);
    objref const constant = own_key(1);
    NamedSlot const a("a", constant->force_changed_signal());
    constant->changed();
    EXPECT_EQ(take_calls(), "a;");
}

namespace {

// Stores another value in its place in its destructor.
class cStubborn : public cObjD<int> {
  public:
    explicit cStubborn(cObj &owner) : owner_(&owner) {}
    cStubborn(cStubborn const &) = delete;
    cStubborn &operator=(cStubborn const &) = delete;
    ~cStubborn() override { owner_->set_omember("changed", cat::of("again")); }

  private:
    cObj *owner_;
};

} // namespace

TEST_F(Changed, force_on_a_member_that_refuses_replacement_returns_a_scratch_signal) {
    objref const obj = cat::of(1);
    obj->set_omember("changed", objref::adopt(new cStubborn(*obj)));
    cSignal const &scratch = obj->force_changed_signal();
    EXPECT_EQ(cat::as_string(changed_object(*obj)), "again");
    NamedSlot const a("a", scratch);
    obj->changed();
    EXPECT_EQ(take_calls(), "");
    EXPECT_NE(&obj->force_changed_signal(), &scratch); // a signal replaces the string
}

// --- exceptions: changes stay, and no emission is in progress

TEST_F(Changed, an_exception_of_a_slot_is_passed_on_and_the_change_stays) {
    objref const obj = cat::of(1);
    NamedSlot const a("a", obj->force_changed_signal()), b("b", *obj->changed_signal());
    plans["a"] = [] { throw std::runtime_error("a"); };
    obj->changed_signal()->blockoncall(true);
    EXPECT_THROW(obj->changed(), std::runtime_error);
    EXPECT_THROW(obj->set_omember("k", cat::of(7)), std::runtime_error);
    EXPECT_TRUE(cat::is_equal(obj->omember("k"), 7));
    EXPECT_THROW(obj->set_omember("k", objref()), std::runtime_error);
    EXPECT_TRUE(obj->omember("k") == cat::badfind());
    EXPECT_THROW((void)obj->call("changed"), std::runtime_error);
    EXPECT_THROW(obj->ommap(hashref(obj->ommap_ref())), std::runtime_error);
    EXPECT_EQ(take_calls(), "a;a;a;a;a;");
    EXPECT_EQ(cConnection::lock_count(), 0);
    EXPECT_FALSE(obj->changed_signal()->isblocked());
    plans.clear();
    obj->changed();
    EXPECT_EQ(take_calls(), "a;b;");
}

TEST_F(Changed, a_slot_that_throws_while_the_member_map_is_replaced_leaves_the_new_one) {
    objref const obj = cat::of(1), donor = cat::of(2);
    obj->set_omember("k", cat::of(1));
    NamedSlot const a("a", donor->force_changed_signal());
    plans["a"] = [] { throw std::runtime_error("a"); };
    EXPECT_THROW(obj->ommap(donor->ommap_ref()), std::runtime_error);
    EXPECT_EQ(obj->ommap_ptr(), donor->ommap_ptr());
    cRef<cMapObj> const map = make<cMapObj>(donor->ommap_ref());
    obj->ommap(hashref());
    EXPECT_THROW(obj->ommap(*map), std::runtime_error);
    EXPECT_EQ(obj->ommap_ptr(), donor->ommap_ptr());
}

TEST_F(Changed, a_slot_that_throws_while_its_signal_is_stored_leaves_it_stored) {
    objref const obj = cat::of(1);
    cRef<cSignalObj> const signal = make<cSignalObj>();
    NamedSlot const a("a", signal->signal());
    plans["a"] = [] { throw std::runtime_error("a"); };
    EXPECT_THROW(obj->set_omember("changed", signal), std::runtime_error);
    EXPECT_EQ(obj->changed_signal(), &signal->signal());
}

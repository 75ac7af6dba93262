// Maps: operations that walk over all values. Comparing, owners, private copies, empty children; in
// maps that contain themselves, in deep maps and in ladders.

#include "qrv/containers/citerobj.h"
#include "qrv/core/cexe.h"
#include "qrv/core/cobjd.h"
#include "tests/containers/map_support.h"
#include "tests/containers/trees.h"
#include "tests/support/fixture.h"

using namespace trees;

namespace {

class MapWalk : public QrvTest {};

// --- comparing

TEST_F(MapWalk, maps_are_equal_if_they_have_equal_pairs_in_the_same_order) {
    mapref const a = map({{"a", 1}, {2, map({{"x", "y"}})}});
    mapref const b = map({{"a", 1}, {2, map({{"x", "y"}})}});
    EXPECT_TRUE(a->equal(*b));
    EXPECT_FALSE(a->equal(*map({{"a", 1}})));
    EXPECT_FALSE(a->equal(*map({{"a", 1}, {"2", map({{"x", "y"}})}})));
    EXPECT_FALSE(a->equal(*map({{"a", 1}, {2, map({{"x", "z"}})}})));
    EXPECT_FALSE(a->equal(*vector({1, 2})));
    EXPECT_TRUE(map()->equal(*map()));
}

TEST_F(MapWalk, equal_methods_refuse_objects_that_are_not_containers) {
    mapref const a = map();
    objref five = of(5);
    objref null;
    EXPECT_FALSE(cTomMap::equal_sorted(*a, five));
    EXPECT_FALSE(cTomMap::equal_sorted(*a, null));
    EXPECT_FALSE(cTomMap::equal_unsorted(*a, five));
    EXPECT_FALSE(cTomMap::equal_unsorted(*five, five));
    EXPECT_FALSE(a->equal_unsorted(*five));
}

TEST_F(MapWalk, unsorted_equality_needs_the_same_keys) {
    EXPECT_FALSE(map({{"a", 1}})->equal_unsorted(*map({{"b", 1}})));
    EXPECT_FALSE(map({{"a", 1}})->equal_unsorted(*map({{"a", 2}})));
    EXPECT_FALSE(map({{"a", 1}})->equal_unsorted(*map()));
    EXPECT_TRUE(map({{0, 1}, {1, 2}})->equal_unsorted(*vector({1, 2})));
}

TEST_F(MapWalk, null_values_equal_only_each_other) {
    mapref const a = map({{"a", 1}});
    mapref const b = map({{"a", 1}});
    a->valref_("a") = nullptr;
    EXPECT_FALSE(a->equal(*b));
    EXPECT_FALSE(b->equal(*a));
    b->valref_("a") = nullptr;
    EXPECT_TRUE(a->equal(*b));
}

// `equal` of one value removes the current entry of the walk.
constinit cMapObj *walked = nullptr;
bool removing_equal(cObj &, objref &) {
    walked->datamap().delitem("b");
    return true;
}

TEST_F(MapWalk, a_size_that_changes_during_a_comparison_is_reported_on_standard_output) {
    cTypeObj type("removing", nullptr);
    type.set_tmember("equal", make<cExeMember>(removing_equal));
    {
        mapref const a = map({{"a", objref::adopt(new cObjD<int>(1, &type))}, {"b", 2}});
        mapref const b = map({{"a", objref::adopt(new cObjD<int>(1, &type))}, {"b", 2}});
        walked = a.get();
        (void)messages();
        EXPECT_FALSE(a->equal(*b));
        EXPECT_EQ(messages().substr(0, 36), "cAttrHash::size klappt nicht:1 !=  2");
    }
}

mapref ladder(int levels) {
    mapref level = map({{"end", 1}});
    for (int i = 0; i < levels; ++i) level = map({{"l", level}, {"r", level}});
    return level;
}

TEST_F(MapWalk, ladders_are_compared_and_walked_in_linear_time) {
    mapref const a = ladder(64);
    mapref const b = ladder(64);
    EXPECT_TRUE(a->equal(*b));
    EXPECT_TRUE(a->equal_unsorted(*b));
    EXPECT_FALSE(a->is_owner_of(*b));
    EXPECT_FALSE(a->equal(*ladder(63)));
    setref const in_set = set({a});
    EXPECT_TRUE(in_set->equal(*set({b})));
    a->remove_emptychilds(true);
    EXPECT_TRUE(a->detach(true));
    EXPECT_TRUE(a->equal(*b));
}

TEST_F(MapWalk, two_cycles_of_one_shape_are_equal) {
    mapref const a = map();
    mapref const b = map();
    a->datamap().mapitem("k", a);
    b->datamap().mapitem("k", b);
    EXPECT_TRUE(a->equal(*b));
    EXPECT_TRUE(a->equal_unsorted(*b));
    b->datamap().mapitem("x", of(1));
    EXPECT_FALSE(a->equal(*b));
    a->datamap().mapitem("x", of(2));
    EXPECT_FALSE(a->equal(*b));
    a->clear();
    b->clear();
}

// x holds itself through y, and differs from its counterpart only after that: results "equal" that
// depend on the assumption must be dropped with it.
TEST_F(MapWalk, an_assumption_that_fails_removes_the_results_that_depend_on_it) {
    mapref const a1 = map(), a2 = map(), b1 = map(), b2 = map();
    a1->datamap().mapitem("deep", a2);
    a1->datamap().mapitem("n", of(1));
    a2->datamap().mapitem("up", a1);
    b1->datamap().mapitem("deep", b2);
    b1->datamap().mapitem("n", of(2));
    b2->datamap().mapitem("up", b1);
    setref const s = set({a1, a2});
    setref const t = set({b1, b2});
    EXPECT_FALSE(s->equal(*t));
    EXPECT_FALSE(a2->equal(*b2));
    a1->clear();
    b1->clear();
}

// --- cycles, depth

TEST_F(MapWalk, walks_terminate_on_a_map_that_holds_itself) {
    mapref const m = map();
    m->datamap().mapitem("1", m);
    mapref const x = map();
    EXPECT_TRUE(x->setattr(of(1), m));
    EXPECT_FALSE(m->is_owner_of(*x));
    EXPECT_TRUE(m->is_owner_of(*m));
    m->remove_emptychilds(true);
    EXPECT_EQ(m->size(), 1);
    EXPECT_TRUE(m->detach(true));
    EXPECT_EQ(m->datamap().getitem("1"), m) << "a map is not copied into itself";
    EXPECT_EQ(m->findvalue(*m), m);
    m->clear();
}

mapref chain(int levels) {
    mapref level = map();
    for (int i = 0; i < levels; ++i) {
        mapref const outer = make<cMapObj>();
        outer->datamap().mapitem("k", level);
        level = outer;
    }
    return level;
}

TEST_F(MapWalk, nesting_that_exhausts_the_stack_is_refused_with_an_error) {
    mapref const a = chain(60000);
    mapref const b = chain(60000);
    cErrorLog errors;
    EXPECT_FALSE(a->equal(*b));
    EXPECT_EQ(errors.text(), "0x40000001 Nesting is too deep in object type: map\n");
    errors.clear();
    EXPECT_FALSE(a->assign(*b));
    EXPECT_EQ(errors.text(), "0x40000001 Nesting is too deep in object type: map\n");
    errors.clear();
    EXPECT_FALSE(a->detach(true));
    EXPECT_EQ(errors.text(), "0x40000001 Nesting is too deep in object type: map\n");
    errors.clear();
    a->remove_emptychilds(true);
    EXPECT_EQ(errors.text(), "0x40000001 Nesting is too deep in object type: map\n");
    EXPECT_FALSE(a->is_owner_of(*b)) << "this walk is not recursive";
}

// --- owners

TEST_F(MapWalk, an_owner_is_found_at_any_depth_by_identity) {
    objref const leaf = of(1);
    mapref const m = map({{"a", vector({map({{"b", set({leaf})}})})}});
    EXPECT_TRUE(m->is_owner_of(*leaf));
    EXPECT_FALSE(m->is_owner_of(*of(1)));
    EXPECT_FALSE(m->is_owner_of(*m));
    EXPECT_FALSE(leaf->is_owner_of(*m));
}

constinit cMapObj *iterated = nullptr;
objref iterobj_elsewhere(objref) { return iterated->iterobj(); }

TEST_F(MapWalk, owners_are_found_through_a_custom_iterator) {
    objref const leaf = of(1);
    mapref const hidden = map({{"x", leaf}});
    iterated = hidden.get();
    objref const holder = of("text");
    ASSERT_TRUE(holder->set_omember("iterobj", make<cExeMember>(iterobj_elsewhere)));
    mapref const m = map({{"a", holder}});
    EXPECT_TRUE(m->is_owner_of(*leaf));
    EXPECT_TRUE(holder->is_owner_of(*leaf));
}

// --- private copies

TEST_F(MapWalk, detach_clones_scalars_and_copies_containers) {
    objref const one = of(1);
    objref const inner = of(2);
    mapref const sub = map({{"x", inner}});
    mapref const m = map({{"a", one}, {"m", sub}, {"v", vector({3})}, {"s", set({4})}});
    EXPECT_TRUE(m->detach(false));
    EXPECT_EQ(shape(m), "{a=1, m={x=2}, v=[3], s=<4>}");
    EXPECT_NE(m->datamap().getitem("a"), one);
    EXPECT_NE(m->datamap().getitem("m"), sub);
    EXPECT_EQ(m->getattr(of("m"))->getattr(of("x")), inner) << "only one level is copied";
    EXPECT_TRUE(m->detach(true));
    EXPECT_NE(m->getattr(of("m"))->getattr(of("x")), inner);
    EXPECT_TRUE(map()->detach(true));
}

TEST_F(MapWalk, detach_is_false_if_a_value_cannot_be_cloned) {
    mapref const m = map({{"a", cat::nil()}, {"b", 1}});
    objref const b = m->datamap().getitem("b");
    EXPECT_FALSE(m->detach(false));
    EXPECT_NE(m->datamap().getitem("b"), b) << "the other values are still cloned";
    EXPECT_EQ(m->datamap().getitem("a"), cat::nil());
}

TEST_F(MapWalk, detach_does_not_copy_containers_of_other_types) {
    cOwnType own;
    own.type.setflags(tf_container);
    {
        mapref const derived = make<cMapObj>(&own.type, false);
        mapref const m = map({{"a", derived}});
        EXPECT_TRUE(m->detach(true));
        EXPECT_EQ(m->datamap().getitem("a"), derived);
    }
}

TEST_F(MapWalk, a_deep_detach_copies_a_shared_part_once) {
    mapref const shared = map({{"x", 1}});
    mapref const m = map({{"a", shared}, {"b", shared}});
    EXPECT_TRUE(m->detach(true));
    EXPECT_NE(m->datamap().getitem("a"), shared);
    EXPECT_EQ(m->datamap().getitem("a"), m->datamap().getitem("b"));
    EXPECT_TRUE(m->detach(false));
    EXPECT_NE(m->datamap().getitem("a"), m->datamap().getitem("b"));
}

TEST_F(MapWalk, copy_on_write_clones_only_shared_values) {
    objref one = of(1);
    cObj *const before = one.get();
    EXPECT_TRUE(cat::detach(one, false));
    EXPECT_EQ(one.get(), before);
    objref const second = one;
    EXPECT_TRUE(cat::detach(one, false));
    EXPECT_NE(one.get(), before);
    EXPECT_EQ(shape(one), "1");
    objref null;
    EXPECT_FALSE(cat::detach(null, true));
    objref nil = cat::nil();
    EXPECT_FALSE(cat::detach(nil, true));
}

TEST_F(MapWalk, copy_on_write_of_a_container_is_deep_on_request) {
    objref const inner = of(1);
    objref m = map({{"a", inner}});
    EXPECT_TRUE(cat::detach(m, false));
    EXPECT_EQ(m->getattr(of("a")), inner);
    EXPECT_TRUE(cat::detach(m, true));
    EXPECT_NE(m->getattr(of("a")), inner);
}

TEST_F(MapWalk, the_constants_are_never_replaced) {
    cObj *const before = cat::btrue().get();
    EXPECT_FALSE(cat::detach(cat::btrue(), false));
    EXPECT_FALSE(cat::detach(cat::bfalse(), true));
    EXPECT_EQ(cat::btrue().get(), before);
    objref copy = cat::btrue();
    EXPECT_TRUE(cat::detach(copy, false));
    EXPECT_NE(copy, cat::btrue());
}

// --- empty children

TEST_F(MapWalk, only_exact_maps_count_as_empty_children) {
    mapref const m = map({{"v", vector()}, {"s", set()}, {"m", map()}, {"n", cat::nil()}});
    m->remove_emptychilds(true);
    EXPECT_EQ(shape(m), "{v=[], s=<>, n=nil}");
}

TEST_F(MapWalk, a_removal_starts_the_walk_again_and_with_it_the_recursion) {
    // The first walk empties b; the removal of z causes a second walk, which finds b empty.
    mapref const m = map({{"b", map({{"c", map()}})}, {"z", map()}});
    m->remove_emptychilds(true);
    EXPECT_EQ(shape(m), "{}");
}

} // namespace

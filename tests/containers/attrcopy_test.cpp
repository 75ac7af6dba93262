// attrcopy, the guard against cycles and the budget of merges.

#include "containers/cmergebudget.h"
#include "qrv/containers/cattr.h"
#include "qrv/containers/cattspec.h"
#include "qrv/containers/citerobj.h"
#include "qrv/core/cexe.h"
#include "qrv/text/write/cwriter.h"
#include "tests/containers/trees.h"
#include "tests/support/fixture.h"

using namespace trees;

namespace {

class Attrcopy : public QrvTest {};
class AttrcopyEdge : public QrvTest {};

objref at(cRef<cMapObj> const &map, char const *key) { return map->datamap().getitem(key); }

TEST_F(AttrcopyEdge, identical_maps_keep_their_objects) {
    mapref const a = map({{"x", 1}, {"y", map({{"z", 2}})}});
    mapref const b = map({{"x", 5}, {"y", map({{"z", 6}})}});
    objref const x = at(a, "x");
    objref const y = at(a, "y");
    objref const z = y->getattr(of("z"));
    EXPECT_TRUE(a->attrcopy(*b, "0as"));
    EXPECT_EQ(shape(a), "{x=5, y={z=6}}");
    EXPECT_EQ(at(a, "x"), x);
    EXPECT_EQ(at(a, "y"), y);
    EXPECT_EQ(y->getattr(of("z")), z);
}

TEST_F(AttrcopyEdge, three_dashes_or_no_letters_do_nothing) {
    mapref const b = map({{"x", 5}, {"n", 6}});
    for (char const *commands : {"---", "", static_cast<char const *>(nullptr)}) {
        mapref const a = map({{"x", 1}, {"y", 2}});
        EXPECT_TRUE(a->attrcopy(*b, commands));
        EXPECT_EQ(shape(a), "{x=1, y=2}");
    }
}

TEST_F(AttrcopyEdge, question_marks_use_the_letters_of_the_member) {
    mapref const a = map({{"gone", 0}, {"x", 1}});
    mapref const b = map({{"x", 5}, {"n", 6}});
    EXPECT_TRUE(a->attrcopy(*b, "?s?"));
    EXPECT_EQ(shape(a), "{x=5, n=6}");
    EXPECT_EQ(at(a, "x"), at(b, "x")) << "the value is stored, not assigned";
}

// The arguments of the calls of setattr, in order.
constinit std::string *calls = nullptr;
bool noting_setattr(cObj &obj, objref &key, objref &value) {
    *calls += cat::as_string(key) + (value ? "=" + shape(value.get()) : " gone") + "; ";
    return cTomVector::setattr(obj, key, value);
}

TEST_F(AttrcopyEdge, a_vector_of_five_is_assigned_three) {
    std::string noted;
    calls = &noted;
    vectorref const v = ints(5);
    ASSERT_TRUE(v->set_omember("setattr", make<cExeMember>(noting_setattr)));
    objref const first = v->getattr(of(0));
    EXPECT_TRUE(v->assign(*ints(3, 10)));
    EXPECT_EQ(shape(v), "[10, 11, 12]");
    EXPECT_EQ(noted, "4 gone; 3 gone; ");
    EXPECT_EQ(v->getattr(of(0)), first);
}

TEST_F(AttrcopyEdge, a_vector_of_three_is_assigned_five) {
    vectorref const v = ints(3);
    vectorref const w = ints(5, 10);
    objref const first = v->getattr(of(0));
    EXPECT_TRUE(v->assign(*w));
    EXPECT_EQ(shape(v), "[10, 11, 12, 13, 14]");
    EXPECT_EQ(v->getattr(of(0)), first);
    EXPECT_EQ(v->getattr(of(3)), w->getattr(of(3)));
}

TEST_F(AttrcopyEdge, merging_vectors_concatenates_and_maps_merge) {
    vectorref const v = vector({1, 2});
    EXPECT_TRUE(v->attrcopy(*vector({3, 4, 5}), "-xx"));
    EXPECT_EQ(shape(v), "[1, 2, 3, 4, 5]");
    mapref const m = map({{"a", map({{"x", 1}, {"v", vector({1})}})}, {"keep", 0}});
    EXPECT_TRUE(
        m->attrcopy(*map({{"a", map({{"x", 2}, {"y", 3}, {"v", vector({2})}})}, {"b", 4}}), "-xx"));
    EXPECT_EQ(shape(m), "{a={x=2, v=[1, 2], y=3}, keep=0, b=4}");
}

TEST_F(AttrcopyEdge, append_keys_adds_missing_keys_only) {
    mapref const m = map({{"a", 7}});
    m->append_keys("a b", ' ');
    EXPECT_EQ(shape(m), "{a=7, b=nil}");
}

// --- letters

TEST_F(Attrcopy, every_letter_has_its_effect_at_every_position) {
    struct cCase {
        char const *commands;
        char const *result;
        bool shares_both; // "b" has the source's value
        bool keeps_both;  // "b" has the target's old value
    };
    for (cCase const &c :
         {cCase{"0--", "{b=2}", false, true}, cCase{"a--", "{t=1, b=2}", false, true},
          cCase{"-a-", "{t=1, b=8}", false, true}, cCase{"-s-", "{t=1, b=8}", true, false},
          cCase{"-x-", "{t=1, b=8}", false, true}, cCase{"-0-", "{t=1}", false, false},
          cCase{"--s", "{t=1, b=2, s=9}", false, true},
          cCase{"--x", "{t=1, b=2, s=9}", false, true}, cCase{"--a", "{t=1, b=2}", false, true},
          cCase{"--0", "{t=1, b=2}", false, true}, cCase{"00s", "{s=9}", false, false},
          cCase{"0", "{b=2}", false, true}, cCase{"-axzzz", "{t=1, b=8, s=9}", false, true}}) {
        mapref const target = map({{"t", 1}, {"b", 2}});
        mapref const source = map({{"b", 8}, {"s", 9}});
        objref const before = at(target, "b");
        EXPECT_TRUE(target->attrcopy(*source, c.commands)) << c.commands;
        EXPECT_EQ(shape(target), c.result) << c.commands;
        EXPECT_EQ(at(target, "b") == at(source, "b"), c.shares_both) << c.commands;
        EXPECT_EQ(at(target, "b") == before, c.keeps_both) << c.commands;
        EXPECT_EQ(shape(source), "{b=8, s=9}");
    }
}

TEST_F(Attrcopy, letters_on_vectors_and_sets) {
    struct cCase {
        char const *commands;
        char const *vector;
        char const *set;
    };
    for (cCase const &c :
         {cCase{"0--", "[1]", "<1>"}, cCase{"-0-", "[2, 3]", "<2, 3>"}, cCase{"00-", "[]", "<>"},
          cCase{"-x-", "[1, 2, 3, 8]", "<1, 2, 3, 8>"}, cCase{"-s-", "[8, 2, 3]", "<8, 2, 3>"},
          cCase{"-a-", "[8, 2, 3]", "<8, 2, 3>"}}) {
        vectorref const v = vector({1, 2, 3});
        EXPECT_TRUE(v->attrcopy(*vector({8}), c.commands));
        EXPECT_EQ(shape(v), c.vector) << c.commands;
        setref const s = set({1, 2, 3});
        EXPECT_TRUE(s->attrcopy(*set({8}), c.commands));
        EXPECT_EQ(shape(s), c.set) << c.commands;
    }
    vectorref const v = vector({1});
    EXPECT_TRUE(v->attrcopy(*vector({8, 9}), "--s"));
    EXPECT_EQ(shape(v), "[1, 9]");
    vectorref const w = vector({1});
    EXPECT_TRUE(w->attrcopy(*vector({8, 9}), "--x"));
    EXPECT_EQ(shape(w), "[1, 9]");
    setref const s = set({9});
    EXPECT_TRUE(s->attrcopy(*vector({8, 9}), "-xx")) << "the result of append is ignored";
    EXPECT_EQ(shape(s), "<9, 8>");
}

TEST_F(Attrcopy, merging_one_key_depends_on_the_type_of_the_targets_value) {
    struct cCase {
        objref present, coming;
        char const *result;
    };
    for (cCase const &c :
         {cCase{map({{"a", 1}}), map({{"b", 2}}), "{k={a=1, b=2}}"},
          cCase{vector({1}), vector({2, 3}), "{k=[1, 2, 3]}"},
          cCase{vector({1}), set({2, 3}), "{k=[1, 2, 3]}"},
          cCase{set({1}), vector({1, 2}), "{k=<1, 2>}"}, cCase{vector({1}), of(2), "{k=[1, 2]}"},
          cCase{vector({1}), map({{"a", 2}}), "{k=[1, {a=2}]}"}, cCase{set({1}), of(1), "{k=<1>}"},
          cCase{of(1), of(2), "{k=2}"}, cCase{map({{"a", 1}}), vector({5}), "{k={a=1, 0=5}}"}}) {
        mapref const target = map({{"k", c.present}});
        EXPECT_TRUE(target->attrcopy(*map({{"k", c.coming}}), "-xx"));
        EXPECT_EQ(shape(target), c.result);
        EXPECT_EQ(at(target, "k"), c.present);
    }
}

TEST_F(Attrcopy, after_a_failure_of_a_part_the_result_is_false_and_the_rest_is_copied) {
    cErrorLog errors;
    mapref const target = map({{"k", map()}, {"n", cat::nil()}, {"z", 1}});
    mapref const source = map({{"k", 5}, {"n", 6}, {"z", 7}});
    EXPECT_FALSE(target->attrcopy(*source, "-x-"))
        << "5 is not a container, and nil accepts no value";
    EXPECT_EQ(shape(target), "{k={}, n=nil, z=7}");
    mapref const locked = map({{"a", 1}});
    locked->setflags(of_const_keys);
    EXPECT_FALSE(locked->attrcopy(*map({{"a", 2}, {"b", 3}}), "0as"));
    EXPECT_EQ(shape(locked), "{a=2}");
}

TEST_F(Attrcopy, assigning_nil_in_place_leaves_the_value) {
    mapref const target = map({{"a", 1}});
    EXPECT_TRUE(target->attrcopy(*map({{"a", cat::nil()}}), "-a-"));
    EXPECT_EQ(shape(target), "{a=1}");
}

TEST_F(Attrcopy, a_source_without_iterator_is_refused) {
    mapref const target = map({{"a", 1}});
    EXPECT_FALSE(target->attrcopy(*of(5), "0as"));
    EXPECT_FALSE(target->attrcopy(*cat::nil(), "0as"));
    EXPECT_FALSE(target->assign(of(5)));
    EXPECT_EQ(shape(target), "{a=1}");
}

objref no_iterator(objref) { return cat::of(3); }

TEST_F(Attrcopy, an_iterobj_that_returns_no_iterator_is_refused) {
    mapref const source = map({{"a", 1}});
    ASSERT_TRUE(source->set_omember("iterobj", make<cExeMember>(no_iterator)));
    EXPECT_FALSE(map()->attrcopy(*source, "0as"));
}

TEST_F(Attrcopy, the_setattr_of_a_target_that_is_not_a_container_is_called) {
    cErrorLog errors;
    EXPECT_FALSE(of(5)->attrcopy(*map({{"a", 1}}), "0as"));
    EXPECT_EQ(errors.text(), "0x48000000 Call of missed standard method 'setattr' in type: int\n");
    EXPECT_FALSE(cat::nil()->attrcopy(*map({{"a", 1}}), "0as"));
}

// --- the member cpcommands

TEST_F(Attrcopy, question_marks_use_the_object_then_its_type_then_the_globals) {
    mapref const source = map({{"b", 8}, {"s", 9}});
    mapref const target = map({{"t", 1}, {"b", 2}});
    target->set_omember("cpcommands", of("-0"));
    EXPECT_TRUE(target->attrcopy(*source, "??s"));
    EXPECT_EQ(shape(target), "{t=1, s=9}");
    mapref const second = map({{"t", 1}, {"b", 2}});
    second->set_omember("cpcommands", of("-0"));
    EXPECT_TRUE(second->attrcopy(*source, "?")) << "no member has a third letter";
    EXPECT_EQ(shape(second), "{t=1}");
    mapref const third = map({{"t", 1}, {"b", 2}});
    third->set_omember("cpcommands", of(5));
    EXPECT_TRUE(third->attrcopy(*source, "??s")) << "a member that is not a string is ignored";
    EXPECT_EQ(shape(third), "{t=1, b=2, s=9}");
    cTypeObj plain("plain_container", nullptr);
    plain.set_tmember("setattr", cat::type_map().tmember("setattr"));
    plain.set_tmember("getattr", cat::type_map().tmember("getattr"));
    plain.set_tmember("iterobj", cat::type_map().tmember("iterobj"));
    {
        mapref const fourth = make<cMapObj>(&plain, false);
        fourth->datamap().mapitem("t", of(1));
        fourth->datamap().mapitem("b", of(2));
        EXPECT_TRUE(fourth->attrcopy(*source, "???")) << "the global default for all types is -a-";
        EXPECT_EQ(trees::inside(*fourth, true), "t=1, b=8");
    }
}

// --- order and identity

TEST_F(Attrcopy, keys_are_treated_in_the_targets_order_then_the_sources) {
    std::string noted;
    calls = &noted;
    mapref const target = map({{"c", 1}, {"a", 2}, {"gone", 0}, {"b", 3}});
    ASSERT_TRUE(
        target->set_omember("setattr", make<cExeMember>(+[](cObj &obj, objref &key, objref &value) {
                                *calls += cat::as_string(key) + (value ? "" : " gone") + "; ";
                                return cTomMap::setattr(obj, key, value);
                            })));
    mapref const source = map({{"z", 0}, {"b", 1}, {"y", 2}, {"a", 3}, {"c", 4}});
    EXPECT_TRUE(target->attrcopy(*source, "0ss"));
    EXPECT_EQ(noted, "c; a; gone gone; b; z; y; ");
    noted.clear();
    EXPECT_TRUE(target->attrcopy(*source, "-ss"));
    EXPECT_EQ(noted, "c; a; b; z; y; ");
    target->datamap().insert(of("b"), of(0), target->datamap().first());
    noted.clear();
    EXPECT_TRUE(target->attrcopy(*source, "-s-"));
    EXPECT_EQ(noted, "b; c; a; z; y; ");
}

TEST_F(Attrcopy, an_attribute_is_read_through_the_sources_own_getattr) {
    mapref const source = map({{"a", 1}});
    ASSERT_TRUE(source->set_omember(
        "getattr", make<cExeMember>(+[](objref, objref) { return cat::of("own"); })));
    mapref const target = map();
    EXPECT_TRUE(target->attrcopy(*source, "--s"));
    EXPECT_EQ(shape(target), "{a=own}");
}

TEST_F(Attrcopy, a_vector_merged_with_itself_doubles) {
    vectorref const v = vector({1, 2});
    EXPECT_TRUE(v->attrcopy(*v, "-xx"));
    EXPECT_EQ(shape(v), "[1, 2, 1, 2]");
    mapref const m = map({{"a", map({{"v", vector({1})}})}});
    EXPECT_TRUE(m->attrcopy(*m, "-xx"));
    EXPECT_EQ(shape(m), "{a={v=[1, 1]}}");
}

TEST_F(Attrcopy, a_clone_is_as_deep_as_assign) {
    mapref const m = map({{"a", map({{"x", 1}})}});
    objref const copy = m->clone();
    EXPECT_TRUE(copy->equal(*m));
    EXPECT_EQ(copy->getattr(of("a")), at(m, "a"));
}

TEST_F(Attrcopy, merging_a_small_source_does_not_change_the_rest_of_a_large_target) {
    mapref const much = map();
    for (int i = 0; i < 50000; ++i) much->datamap().mapitem(cat::of(i), cat::of(i));
    std::uint64_t const before = cAttrHash::probe_count();
    mapref const little = map({{7, 70}, {49999, 1}});
    for (int i = 0; i < 100; ++i) {
        EXPECT_TRUE(much->attrcopy(*map(), "-xx"));
        EXPECT_TRUE(much->attrcopy(*little, "-xx"));
    }
    EXPECT_TRUE(much->datamap().in_creation_order()) << "the order of the two keys is known";
    EXPECT_LT(cAttrHash::probe_count() - before, 20000u);
    EXPECT_EQ(shape(much->getattr(of(7))), "70");
}

// --- shared parts and cycles

mapref ladder(int levels, int number) {
    mapref level = map({{"end", number}});
    for (int i = 0; i < levels; ++i) level = map({{"l", level}, {"r", level}});
    return level;
}

TEST_F(Attrcopy, ladders_are_copied_in_linear_time) {
    mapref const a = ladder(64, 1);
    mapref const b = ladder(64, 2);
    EXPECT_TRUE(a->assign(*b));
    EXPECT_TRUE(a->equal(*b));
    EXPECT_NE(at(a, "l"), at(b, "l"));
    EXPECT_TRUE(a->attrcopy(*ladder(64, 3), "-xx"));
    EXPECT_TRUE(a->equal(*ladder(64, 3)));
}

TEST_F(Attrcopy, ladders_of_vectors_are_assigned_in_linear_time) {
    auto const build = [](int number) {
        vectorref level = vector({number});
        for (int i = 0; i < 64; ++i) level = vector({level, level});
        return level;
    };
    vectorref const a = build(1);
    EXPECT_TRUE(a->assign(*build(2)));
    EXPECT_TRUE(a->equal(*build(2)));
}

TEST_F(Attrcopy, maps_that_hold_themselves_are_copied_once) {
    mapref const a = map({{"x", 1}});
    mapref const b = map({{"x", 2}});
    a->datamap().mapitem("k", a);
    b->datamap().mapitem("k", b);
    EXPECT_TRUE(a->assign(*b));
    EXPECT_EQ(shape(at(a, "x")), "2");
    EXPECT_EQ(at(a, "k"), a);
    a->clear();
    b->clear();
}

// A part that appears twice is assigned once, but appended to each time.
TEST_F(Attrcopy, appending_is_never_remembered) {
    vectorref const shared = vector({1});
    mapref const target = map({{"a", shared}, {"b", shared}});
    vectorref const coming = vector({2});
    EXPECT_TRUE(target->attrcopy(*map({{"a", coming}, {"b", coming}}), "-xx"));
    EXPECT_EQ(shape(target), "{a=[1, 2, 2], b=[1, 2, 2]}");
}

// A copy that user code makes inside its assign is separate.
constinit cMapObj *copied_from = nullptr;
bool copying_assign(cObj &obj, objref &) {
    obj.attrcopy(*copied_from, "0as");
    copied_from->datamap().mapitem("late", cat::of(1));
    return obj.attrcopy(*copied_from, "0as");
}

TEST_F(Attrcopy, copies_that_user_code_makes_are_separate) {
    mapref const source = map({{"x", 1}});
    copied_from = source.get();
    mapref const inner = map();
    ASSERT_TRUE(inner->set_omember("assign", make<cExeMember>(copying_assign)));
    mapref const target = map({{"k", inner}});
    EXPECT_TRUE(target->assign(*map({{"k", source}})));
    EXPECT_EQ(shape(target), "{k={x=1, late=1}}");
}

// --- budget

class cCountingBudget final : public cat::cMergeBudget {
  public:
    using cat::cMergeBudget::cMergeBudget;
    cCountingBudget(cCountingBudget const &) = delete;
    cCountingBudget &operator=(cCountingBudget const &) = delete;
    ~cCountingBudget() override = default;

    void left_out(cObj &holder, objref const &key, objref const &value) override {
        noted += shape(&holder) + " " + (key ? cat::as_string(key) : "-") + "; ";
        (void)value;
    }
    std::string noted;
};

TEST_F(Attrcopy, without_a_budget_nothing_is_counted_or_refused) {
    EXPECT_EQ(cat::cMergeBudget::current(), nullptr);
    EXPECT_FALSE(cat::merge_exhausted());
    setref const s = set();
    EXPECT_TRUE(cat::merge_allows(*s, nullptr, s));
    EXPECT_TRUE(s->append(s));
    s->clear();
}

TEST_F(Attrcopy, with_a_budget_a_part_that_would_close_a_cycle_is_skipped) {
    cCountingBudget budget(1000000);
    setref const s = set();
    EXPECT_TRUE(s->attrcopy(*set({s}), "-xx"));
    EXPECT_EQ(s->size(), 0);
    vectorref const v = vector();
    EXPECT_TRUE(v->attrcopy(*vector({v}), "-xx"));
    EXPECT_TRUE(v->assign(*vector({v})));
    EXPECT_EQ(v->size(), 0);
    EXPECT_TRUE(s->assign(*vector({s, 1})));
    EXPECT_EQ(shape(s), "<1>");
    mapref const m = map();
    EXPECT_FALSE(m->attrcopy(*map({{"x", m}}), "-xx"));
    EXPECT_EQ(m->size(), 0);
    EXPECT_EQ(budget.noted, "<> -; [] -; [] -; <> -; {} x; ");
    budget.noted.clear();
    // Two levels apart.
    mapref const a = map();
    mapref const top = map({{"a", a}, {"w", vector({1})}});
    EXPECT_FALSE(top->attrcopy(*map({{"a", map({{"x", top}})}}), "-xx"));
    EXPECT_TRUE(top->attrcopy(*map({{"w", top}}), "-xx"));
    EXPECT_EQ(shape(top), "{a={}, w=[1]}");
    EXPECT_EQ(budget.noted, "{} x; [1] -; ");
}

TEST_F(Attrcopy, a_budget_counts_pairs_values_and_walked_values) {
    {
        cCountingBudget budget(1000);
        EXPECT_EQ(cat::cMergeBudget::current(), &budget);
        map()->attrcopy(*map({{"a", 1}, {"b", 2}}), "-xx");
        EXPECT_EQ(budget.spent(), 2u);
        vector()->attrcopy(*vector({1, 2, 3}), "-xx");
        EXPECT_EQ(budget.spent(), 5u);
        map()->attrcopy(*map({{"v", vector({1, 2, 3, 4})}}), "-xx");
        EXPECT_EQ(budget.spent(), 10u) << "one for the pair, and one for each of the four values";
        map({{"a", 1}})->attrcopy(*map({{"a", 2}}), "-xx");
        EXPECT_EQ(budget.spent(), 11u) << "an assignment in place counts as a pair, too";
        EXPECT_FALSE(budget.exhausted());
    }
    EXPECT_EQ(cat::cMergeBudget::current(), nullptr);
}

TEST_F(Attrcopy, a_merge_beyond_the_budget_is_skipped_as_a_whole) {
    cCountingBudget budget(10);
    vectorref const v = vector();
    EXPECT_TRUE(v->attrcopy(*ints(10), "-xx"));
    EXPECT_FALSE(budget.exhausted());
    EXPECT_FALSE(v->attrcopy(*ints(20), "-xx"));
    EXPECT_EQ(v->size(), 10);
    EXPECT_TRUE(budget.exhausted());
    EXPECT_TRUE(cat::merge_exhausted());
    EXPECT_FALSE(v->attrcopy(*ints(1), "-xx"));
    EXPECT_EQ(v->size(), 10);
    budget.set_limit(12);
    EXPECT_TRUE(v->attrcopy(*ints(1), "-xx"));
    EXPECT_EQ(v->size(), 11);
    EXPECT_EQ(budget.noted, "");
}

TEST_F(Attrcopy, a_merge_that_exceeds_the_budget_stops) {
    cCountingBudget budget(5);
    mapref const m = map();
    // The budget suffices for two pairs, but not for walking the first value.
    EXPECT_FALSE(m->attrcopy(*map({{"a", ints(20)}, {"b", 1}}), "-xx"));
    EXPECT_EQ(m->size(), 0);
    EXPECT_TRUE(budget.exhausted());
    EXPECT_EQ(budget.noted, "");
}

TEST_F(Attrcopy, repeated_doubling_and_walking_are_limited) {
    cCountingBudget budget(100000);
    mapref const m = map({{"v", vector({1, 2})}});
    objref const v = at(m, "v");
    for (int i = 0; i < 5000; ++i) m->attrcopy(*map({{"v", v}}), "-xx");
    EXPECT_LE(static_cast<cMapObj &>(*v).size(), 100002);
    cCountingBudget inner(100000);
    mapref const large = map({{"v", ints(1000)}});
    mapref const b = map();
    for (int i = 0; i < 5000; ++i) b->attrcopy(*map({{cat::of(i), objref(large)}}), "-xx");
    EXPECT_LT(b->size(), 110);
}

} // namespace

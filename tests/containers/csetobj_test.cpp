#include "qrv/containers/csetobj.h"

#include "qrv/containers/cattr.h"
#include "qrv/core/cexe.h"
#include "tests/containers/trees.h"
#include "tests/support/fixture.h"

#include <cmath>

using namespace trees;

namespace {

class SetObj : public QrvTest {};
class SetEdge : public QrvTest {};

TEST_F(SetEdge, an_equal_value_changes_nothing) {
    objref const one = of(1);
    setref const s = set({one});
    EXPECT_TRUE(s->setattr(of(0), of(1)));
    EXPECT_EQ(s->getattr(of(0)), one);
    EXPECT_FALSE(s->append(of(1)));
    EXPECT_EQ(shape(s), "<1>");
}

TEST_F(SetObj, sets_can_be_constructed_and_copied_and_have_their_members) {
    setref const s = set({1, 2});
    EXPECT_EQ(&s->type(), &cat::type_set());
    s->setflags(of_const_keys);
    setref const copy = make<cSetObj>(*s);
    EXPECT_EQ(shape(copy), "<1, 2>");
    EXPECT_EQ(copy->flags(), of_const_keys);
    cObj const &object = *s;
    EXPECT_EQ(shape(make<cSetObj>(object)), "<1, 2>");
    setref const target = set({9});
    *target = *s;
    EXPECT_EQ(shape(target), "<1, 2>");
    *target = object;
    EXPECT_EQ(shape(target), "<1, 2>");
    EXPECT_EQ(shape(cat::type_set().tmember("wformat")), "sc");
    EXPECT_EQ(shape(cat::type_set().tmember("cpcommands")), "0as");
    EXPECT_EQ(shape(cat::type_set().newobj()), "<>");
    EXPECT_EQ(cat::type_set().flags_of(tf_container | tf_bare), tf_container | tf_bare);
    EXPECT_EQ(shape(s->call("size")), "2");
}

TEST_F(SetObj, an_unequal_value_overwrites_by_index) {
    setref const s = set({1, 2});
    EXPECT_TRUE(s->setattr(of(0), of(3)));
    EXPECT_TRUE(s->setattr(of(2), of(4)));
    EXPECT_TRUE(s->setattr(of(0), of(4))) << "the set has this value at another index";
    EXPECT_EQ(shape(s), "<3, 2, 4>");
}

TEST_F(SetObj, keys_obey_the_rules_of_a_vector) {
    setref const s = set({1});
    cErrorLog errors;
    EXPECT_FALSE(s->setattr(of(5), of(9)));
    EXPECT_FALSE(s->setattr(of("a"), of(9)));
    EXPECT_TRUE(s->setattr(of("a"), of(1)))
        << "the key does not matter if the set has an equal value";
    s->setflags(of_const_keys);
    EXPECT_FALSE(s->setattr(of(1), of(9)));
    EXPECT_FALSE(s->setattr(of(0), nullptr));
    EXPECT_EQ(errors.text(),
              "0x40020000 Setattr in object type 'set', key '5':   Key is OUT OF RANGE\n"
              "0x40020000 Setattr in object type 'set', key 'a':   Key of vector or set must be "
              "'int'\n"
              "0x40020000 Setattr in object type 'set', key '1':   Flag of const key set offended\n"
              "0x40020000 Setattr in object type 'set', key '0':   Flag of const key set "
              "offended\n");
    EXPECT_EQ(shape(s), "<1>");
}

TEST_F(SetObj, the_entry_type_applies_only_to_setattr) {
    setref const s = set();
    s->set_entrytype(&cat::type_int());
    EXPECT_FALSE(s->setattr(of(0), of("x")));
    EXPECT_TRUE(s->append(of("x")));
    EXPECT_EQ(shape(s), "<x>");
}

TEST_F(SetObj, erasing_closes_the_gap) {
    setref const s = set({1, 2, 3});
    EXPECT_TRUE(s->setattr(of(0), nullptr));
    EXPECT_EQ(shape(s), "<2, 3>");
    EXPECT_EQ(s->getattr(of(2)), cat::badfind());
}

TEST_F(SetObj, append_searches_equal_values_of_all_types) {
    setref const s = set();
    EXPECT_TRUE(s->append(of("1")));
    EXPECT_TRUE(s->append(of(1)));
    EXPECT_TRUE(s->append(cat::of(true)));
    EXPECT_TRUE(s->append(cat::of(1.0)));
    EXPECT_TRUE(s->append(map({{"a", 1}})));
    EXPECT_FALSE(s->append(map({{"a", 1}})));
    EXPECT_FALSE(s->append(cat::of(true)));
    EXPECT_FALSE(s->append(of("1")));
    EXPECT_TRUE(s->append(cat::nil()));
    EXPECT_FALSE(s->append(cat::nil()));
    EXPECT_EQ(s->size(), 6);
}

TEST_F(SetObj, adding_forms_the_union) {
    setref const s = set({1, 2});
    EXPECT_TRUE(s->add(*vector({2, 3, 3})));
    EXPECT_EQ(shape(s), "<1, 2, 3>");
    EXPECT_TRUE(s->add(*s));
    EXPECT_EQ(shape(s), "<1, 2, 3>");
    EXPECT_TRUE(s->add(of(5)));
    EXPECT_EQ(shape(s), "<1, 2, 3>");
}

TEST_F(SetObj, assigning_collapses_equal_values) {
    setref const s = set({9});
    EXPECT_TRUE(s->assign(*vector({1, 2, 1, 3, 2})));
    EXPECT_EQ(shape(s), "<1, 2, 3>");
    EXPECT_TRUE(s->assign(*map({{"a", 5}, {"b", 5}})));
    EXPECT_EQ(shape(s), "<5>");
}

TEST_F(SetObj, a_set_assigned_to_itself_becomes_empty) {
    setref const s = set({1, 2});
    EXPECT_TRUE(s->assign(*s));
    EXPECT_EQ(shape(s), "<>");
}

TEST_F(SetObj, assigning_an_object_without_iterator_empties_it) {
    setref const s = set({1, 2});
    EXPECT_TRUE(s->assign(of(5)));
    EXPECT_EQ(shape(s), "<>");
}

TEST_F(SetObj, a_set_may_be_assigned_one_of_its_values) {
    setref const s = set({vector({1, 1, 2})});
    EXPECT_TRUE(s->assign(*s->getattr(of(0))));
    EXPECT_EQ(shape(s), "<1, 2>");
}

TEST_F(SetObj, sets_are_equal_by_mutual_inclusion) {
    EXPECT_TRUE(set({1, 2, "a"})->equal(*set({"a", 1, 2})));
    EXPECT_FALSE(set({1, 2})->equal(*set({1, 3})));
    EXPECT_FALSE(set({1})->equal(*set({1, 2})));
    EXPECT_FALSE(set({1})->equal(*vector({1})));
    EXPECT_TRUE(set({set({1, 2})})->equal(*set({set({2, 1})})));
    // Two equal values can be stored without append: then inclusion may hold in one direction only.
    EXPECT_FALSE(set({1, 1})->equal(*set({1, 2})));
    EXPECT_FALSE(set({1, 2})->equal(*set({1, 1})));
    EXPECT_TRUE(set({1, 1})->equal(*set({1, 1})));
    objref five = of(5);
    EXPECT_FALSE(cTomSet::m_equal(*set(), five));
    EXPECT_FALSE(cTomSet::m_equal(*five, five));
}

TEST_F(SetObj, null_values_are_found_by_null_values) {
    setref const a = set({1, 2});
    setref const b = set({1, 2});
    a->valref_(of(0)) = nullptr;
    EXPECT_FALSE(a->equal(*b));
    EXPECT_FALSE(b->equal(*a));
    b->valref_(of(0)) = nullptr;
    EXPECT_TRUE(a->equal(*b));
}

// Filling a set and single appends have the same result.
TEST_F(SetObj, filling_equals_single_appends) {
    vectorref const source = vector();
    for (int i = 0; i < 300; ++i) {
        source->append(of(i * 7 % 40));
        source->append(cat::of(std::to_string(i % 23)));
        source->append(cat::of(i % 2 == 0));
        if (i % 5 == 0) source->append(cat::of(i % 3 * 0.5));
        if (i % 50 == 0) source->append(cat::of(std::nan("")));
    }
    setref const single = set();
    cAttrHash const &values = source->datamap();
    for (cAttrNode const *node = values.first(); node; node = values.next(node))
        single->append(node->valref());
    setref const assigned = set();
    assigned->assign(*source);
    setref const added = set();
    added->add(*source);
    setref const merged = set();
    merged->attrcopy(*source, "-xx");
    EXPECT_EQ(shape(assigned), shape(single));
    EXPECT_EQ(shape(added), shape(single));
    EXPECT_EQ(shape(merged), shape(single));
    EXPECT_TRUE(assigned->equal(*single));
}

constinit int own_appends = 0;
objref own_append(objref, objref) {
    ++own_appends;
    return cat::nil();
}

TEST_F(SetObj, filling_calls_the_append_of_a_derived_type) {
    setref const s = set();
    ASSERT_TRUE(s->set_omember("append", make<cExeMember>(own_append)));
    own_appends = 0;
    EXPECT_TRUE(s->assign(*ints(20)));
    EXPECT_TRUE(s->add(*ints(20)));
    EXPECT_EQ(own_appends, 40);
    EXPECT_EQ(s->size(), 0);
}

TEST_F(SetObj, filling_a_set_takes_linear_time) {
    constexpr int count = 100000;
    vectorref const source = ints(count);
    setref const a = set();
    EXPECT_TRUE(a->assign(*source));
    setref const b = set();
    EXPECT_TRUE(b->add(*source));
    EXPECT_EQ(a->size(), count);
    EXPECT_TRUE(a->equal(*b));
}

TEST_F(SetObj, methods_refuse_objects_that_are_not_sets) {
    objref const five = of(5);
    objref key = of(0);
    objref value = of(1);
    EXPECT_FALSE(cTomSet::setattr(*five, key, value));
    EXPECT_FALSE(cTomSet::m_append(*five, value));
    EXPECT_FALSE(cTomSet::m_assign(*five, value));
    EXPECT_EQ(cTomSet::getattr(five, key), cat::bad());
    objref null;
    EXPECT_FALSE(cTomSet::m_assign(*set(), null));
    EXPECT_TRUE(cTomSet::m_append(*set(), null));
}

} // namespace

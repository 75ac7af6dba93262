#include "qrv/containers/cvectorobj.h"

#include "qrv/containers/cattr.h"
#include "qrv/core/ceros.h"
#include "qrv/core/cexe.h"
#include "tests/containers/trees.h"
#include "tests/support/fixture.h"

#include <limits>

using namespace trees;

namespace {

constexpr int max_int = std::numeric_limits<int>::max();
constexpr int min_int = std::numeric_limits<int>::min();

class VectorObj : public QrvTest {};
class VectorEdge : public QrvTest {};

std::string const prefix = "0x40020000 Setattr in object type 'vector', key '";

// --- edges

TEST_F(VectorEdge, writing_at_the_end_appends_and_beyond_is_out_of_range) {
    vectorref const v = vector();
    EXPECT_TRUE(v->setattr(of(0), of("x")));
    EXPECT_EQ(shape(v), "[x]");
    vectorref const w = vector();
    cErrorLog errors;
    EXPECT_FALSE(w->setattr(of(1), of("x")));
    EXPECT_FALSE(w->setattr(of(-1), of("x")));
    EXPECT_EQ(errors.text(),
              prefix + "1':   Key is OUT OF RANGE\n" + prefix + "-1':   Key is OUT OF RANGE\n");
    EXPECT_EQ(shape(w), "[]");
}

TEST_F(VectorEdge, only_an_exact_int_is_a_key) {
    vectorref const v = vector({1, 2});
    cErrorLog errors;
    EXPECT_FALSE(v->setattr(of("a"), of("x")));
    EXPECT_FALSE(v->setattr(of("1"), of("x")));
    EXPECT_FALSE(v->setattr(objref(), of("x")));
    EXPECT_FALSE(v->setattr(cat::of(1.0), nullptr));
    ASSERT_EQ(errors.count(), 4u);
    EXPECT_EQ(errors.entries()[0].text, "Setattr in object type 'vector', key 'a':   Key of vector "
                                        "or set must be 'int'");
    for (cErrorLog::cEntry const &entry : errors.entries()) EXPECT_EQ(entry.code, 0x40020000u);
    EXPECT_EQ(shape(v), "[1, 2]");
}

TEST_F(VectorEdge, assigning_null_closes_the_gap) {
    vectorref const v = ints(5);
    EXPECT_TRUE(v->setattr(of(1), nullptr));
    EXPECT_EQ(shape(v), "[0, 2, 3, 4]");
    EXPECT_EQ(v->datamap().find(4), nullptr);
    EXPECT_TRUE(v->setattr(of(0), cat::badfind()));
    EXPECT_EQ(shape(v), "[2, 3, 4]");
    EXPECT_TRUE(v->datamap().is_vector());

    // A locked type at index 1 keeps its value; the following values have moved.
    vectorref const w = vector({0, 1, "two", 3});
    w->datamap().flags(2);
    cErrorLog errors;
    w->setattr(of(0), nullptr);
    EXPECT_GE(errors.count(), 1u);
    EXPECT_EQ(errors.entries()[0].code, 0x40400000u);
    EXPECT_EQ(shape(w).substr(0, 5), "[1, 1");
}

TEST_F(VectorEdge, erasing_at_the_end_changes_nothing) {
    vectorref const v = vector({1, 2});
    EXPECT_TRUE(v->setattr(of(2), nullptr));
    EXPECT_TRUE(v->setattr(of(3), nullptr));
    EXPECT_EQ(shape(v), "[1, 2]");
    EXPECT_FALSE(v->setattr(of(-1), nullptr));
}

TEST_F(VectorEdge, const_keys_allow_writing_but_not_adding_or_erasing) {
    vectorref const v = vector({1, 2});
    v->setflags(of_const_keys);
    EXPECT_TRUE(v->setattr(of(1), of(7)));
    cErrorLog errors;
    EXPECT_FALSE(v->setattr(of(2), of(8)));
    EXPECT_FALSE(v->setattr(of(0), nullptr));
    EXPECT_EQ(errors.text(), prefix + "2':   Flag of const key set offended\n" + prefix +
                                 "0':   Flag of const key set offended\n");
    EXPECT_EQ(shape(v), "[1, 7]");
    EXPECT_TRUE(v->append(of(9)));
    EXPECT_EQ(shape(v), "[1, 7, 9]");
}

TEST_F(VectorEdge, getslice_computes_the_end_before_it_clamps_the_start) {
    EXPECT_EQ(shape(ints(10)->getslice(-2, 5, nullptr)), "[0, 1, 2]");
}

TEST_F(VectorEdge, getslice_with_one_argument_by_name) {
    vectorref const v = ints(10);
    EXPECT_EQ(shape(v->call("getslice", of(3), nullptr)), "[3]");
    EXPECT_EQ(shape(v->call("getslice", of(3), of(2))), "[3, 4]");
    cErrorLog errors;
    EXPECT_EQ(v->call("getslice", of(3)), cat::bad());
    EXPECT_EQ(errors.text(), "0x44000000 Attr value, type 'vector': Call of 'getslice' with bad "
                             "arg count: 1\n");
}

TEST_F(VectorEdge, erase_after_the_unclamped_end_changes_nothing) {
    vectorref const v = ints(4);
    EXPECT_TRUE(v->erase(2, 0));
    EXPECT_EQ(shape(v), "[0, 1, 2, 3]");
}

TEST_F(VectorEdge, setslice_from_a_later_start_erases_as_many_places_as_its_end_says) {
    vectorref const v = ints(10);
    EXPECT_TRUE(v->setslice(*ints(3, 20), 2, 2));
    EXPECT_EQ(shape(v), "[0, 1, 20, 21, 22, 6, 7, 8, 9]");
}

// --- construction

TEST_F(VectorObj, a_new_vector_has_its_type_and_a_copy_has_everything) {
    vectorref const v = vector({1, 2});
    EXPECT_EQ(&v->type(), &cat::type_vector());
    v->setflags(of_const_keys);
    vectorref const copy = make<cVectorObj>(*v);
    EXPECT_EQ(shape(copy), "[1, 2]");
    EXPECT_EQ(copy->flags(), of_const_keys);
    cObj const &object = *v;
    EXPECT_EQ(shape(make<cVectorObj>(object)), "[1, 2]");
    vectorref const target = vector({9});
    *target = *v;
    EXPECT_EQ(shape(target), "[1, 2]");
    *target = object;
    EXPECT_EQ(shape(target), "[1, 2]");
}

TEST_F(VectorObj, the_type_holds_the_listed_members) {
    std::string keys;
    cAttrHash const &members = cat::type_vector().tmmap();
    for (cAttrNode const *node = members.first(); node; node = members.next(node))
        keys += node->key_as_string() + " ";
    EXPECT_EQ(keys, "create write read equal iterobj newobj assign add setattr getattr append "
                    "size clear wformat cpcommands ");
    EXPECT_EQ(shape(cat::type_vector().tmember("wformat")), "sc");
    EXPECT_EQ(shape(cat::type_vector().tmember("cpcommands")), "0as");
    EXPECT_EQ(shape(cat::type_vector().newobj()), "[]");
    EXPECT_EQ(cat::type_vector().flags_of(tf_container | tf_bare), tf_container | tf_bare);
    EXPECT_EQ(shape(vector({1, 2})->call("size")), "2");
}

// --- setattr, getattr

TEST_F(VectorObj, only_setattr_silently_refuses_another_entry_type) {
    vectorref const v = vector();
    v->set_entrytype(&cat::type_int());
    cErrorLog errors;
    EXPECT_FALSE(v->setattr(of(0), of("x")));
    EXPECT_FALSE(v->setattr(of("no key"), of("x")))
        << "the type of the value is tested before the key";
    EXPECT_EQ(errors.count(), 0u);
    EXPECT_TRUE(v->setattr(of(0), of(1)));
    EXPECT_TRUE(v->append(of("x")));
    EXPECT_EQ(shape(v), "[1, x]");
}

TEST_F(VectorObj, reading_returns_the_value_or_badfind) {
    vectorref const v = vector({1});
    EXPECT_EQ(shape(v->getattr(of(0))), "1");
    EXPECT_EQ(v->getattr(of(1)), cat::badfind());
    EXPECT_EQ(v->getattr(objref()), cat::badfind());
    EXPECT_EQ(cTomVector::getattr(of(5), of(0)), cat::bad());
}

TEST_F(VectorObj, a_vector_may_hold_its_owner) {
    vectorref const v = vector();
    vectorref const w = vector({v});
    EXPECT_TRUE(v->setattr(of(0), w)) << "no cycle test here";
    v->clear();
}

TEST_F(VectorObj, nil_is_a_value_and_bad_is_refused) {
    vectorref const v = vector({1});
    EXPECT_TRUE(v->setattr(of(0), cat::nil()));
    EXPECT_TRUE(v->setattr(of(1), cat::nil()));
    EXPECT_FALSE(v->setattr(of(2), cat::bad()));
    EXPECT_FALSE(v->setattr(of(0), cat::bad()));
    EXPECT_EQ(shape(v), "[nil, nil]");
}

TEST_F(VectorObj, a_forgiven_refusal_is_true_and_stores_nothing) {
    vectorref const v = vector();
    cErrorLog errors;
    cat::errhandler().clear_mask(0x00020000U);
    EXPECT_TRUE(v->setattr(of(5), of(1)));
    EXPECT_TRUE(v->setattr(of("a"), of(1)));
    v->setflags(of_const_keys);
    EXPECT_TRUE(v->setattr(of(0), of(1)));
    EXPECT_EQ(v->size(), 0);
}

// --- add, insert, erase

TEST_F(VectorObj, adding_concatenates_also_with_itself) {
    vectorref const v = vector({1, 2});
    EXPECT_TRUE(v->add(*vector({2, 3})));
    EXPECT_EQ(shape(v), "[1, 2, 2, 3]");
    EXPECT_TRUE(v->add(*v));
    EXPECT_EQ(shape(v), "[1, 2, 2, 3, 1, 2, 2, 3]");
    EXPECT_TRUE(v->add(of(5)));
    EXPECT_EQ(v->size(), 8);
    EXPECT_TRUE(v->add(*map({{"a", 9}})));
    EXPECT_EQ(v->size(), 9);
}

TEST_F(VectorObj, insert_adds_or_removes_an_index) {
    vectorref const v = vector({1, 2});
    EXPECT_TRUE(v->insert(1, of(9)));
    EXPECT_EQ(shape(v), "[1, 9, 2]");
    EXPECT_TRUE(v->insert(3, of(8)));
    EXPECT_EQ(shape(v), "[1, 9, 2, 8]");
    EXPECT_FALSE(v->insert(5, of(7)));
    EXPECT_FALSE(v->insert(-1, of(7)));
    EXPECT_TRUE(v->insert(0, nullptr));
    EXPECT_EQ(shape(v), "[9, 2, 8]");
}

TEST_F(VectorObj, erase_removes_the_existing_part_of_the_range) {
    struct cCase {
        int start, count;
        char const *left;
    };
    for (cCase const &c :
         {cCase{1, 2, "[0, 3, 4]"}, cCase{0, 5, "[]"}, cCase{3, 100, "[0, 1, 2]"},
          cCase{-2, 3, "[1, 2, 3, 4]"}, cCase{-2, 2, "[0, 1, 2, 3, 4]"},
          cCase{5, 1, "[0, 1, 2, 3, 4]"}, cCase{2, -1, "[0, 1, 2, 3, 4]"},
          cCase{2, max_int, "[0, 1]"}, cCase{max_int, max_int, "[0, 1, 2, 3, 4]"},
          cCase{min_int, max_int, "[0, 1, 2, 3, 4]"}, cCase{min_int, min_int, "[0, 1, 2, 3, 4]"}}) {
        vectorref const v = ints(5);
        EXPECT_TRUE(v->erase(c.start, c.count));
        EXPECT_EQ(shape(v), c.left) << c.start << ", " << c.count;
    }
}

TEST_F(VectorObj, erasing_ends_where_a_stored_null_has_removed_a_node) {
    vectorref const v = ints(4);
    v->datamap().findpos(2)->valref_() = nullptr;
    v->erase(0, 1);
    EXPECT_EQ(v->datamap().broken_rule(true), "");
}

// --- slices

TEST_F(VectorObj, a_slice_is_a_new_vector_that_shares_the_values) {
    objref const shared = of("s");
    vectorref const v = vector({1, shared, cat::nil(), 4});
    objref const slice = v->getslice(1, 2, nullptr);
    EXPECT_EQ(shape(slice), "[s, nil]");
    EXPECT_EQ(slice->getattr(of(0)), shared);
    EXPECT_TRUE(slice->is_vector());
    EXPECT_EQ(shape(map({{"a", 1}, {"b", 2}})->getslice(1, 5, nullptr)), "[2]");
    EXPECT_EQ(shape(set({1, 2})->getslice(0, 1, nullptr)), "[1]");
}

TEST_F(VectorObj, slices_are_limited_to_the_vector) {
    vectorref const v = ints(4);
    EXPECT_EQ(shape(v->getslice(0, 0, nullptr)), "[]");
    EXPECT_EQ(shape(v->getslice(3, 1, nullptr)), "[3]");
    EXPECT_EQ(shape(v->getslice(4, 1, nullptr)), "[]");
    EXPECT_EQ(shape(v->getslice(-1, 1, nullptr)), "[]");
    EXPECT_EQ(shape(v->getslice(2, max_int, nullptr)), "[2, 3]");
    EXPECT_EQ(shape(v->getslice(max_int, max_int, nullptr)), "[]");
    EXPECT_EQ(shape(v->getslice(min_int, max_int, nullptr)), "[]");
    EXPECT_EQ(shape(v->getslice(2, -1, nullptr)), "[]");
    EXPECT_EQ(shape(vector()->getslice(0, 5, nullptr)), "[]");
    EXPECT_EQ(shape(of(5)->getslice(0, 5, nullptr)), "[]") << "an int cannot be iterated";
}

TEST_F(VectorObj, a_value_of_another_type_is_skipped_but_counts) {
    vectorref const v = vector({1, "a", 2, 3});
    EXPECT_EQ(shape(v->getslice(0, 3, &cat::type_int())), "[1, 2]");
    EXPECT_EQ(shape(v->getslice(1, 1, &cat::type_int())), "[]");
}

TEST_F(VectorObj, getslice_by_name_reads_its_arguments_as_ints) {
    vectorref const v = ints(4);
    EXPECT_EQ(v->call("getslice", of("x"), of(1)), cat::bad());
    EXPECT_EQ(shape(v->call("getslice", of(1), cat::nil())), "[1]");
    EXPECT_EQ(shape(v->call("getslice", of(1), of("x"))), "[1]")
        << "a count that is not an int is 1";
    EXPECT_EQ(shape(v->call("getslice", cat::of(2.9), of(5))), "[2, 3]");
}

TEST_F(VectorObj, setslice_replaces_the_places_of_a_slice_from_the_start) {
    vectorref const v = ints(5);
    EXPECT_TRUE(v->setslice(*vector({"a"}), 0, 2));
    EXPECT_EQ(shape(v), "[a, 2, 3, 4]");
    EXPECT_TRUE(v->setslice(*vector({"b", "c"}), 0, 0)) << "no entry is erased";
    EXPECT_EQ(shape(v), "[b, c, a, 2, 3, 4]");
}

TEST_F(VectorObj, setslice_works_at_the_end_and_after_it) {
    vectorref const v = ints(3);
    EXPECT_TRUE(v->setslice(*vector({9}), 3, 0));
    EXPECT_EQ(shape(v), "[0, 1, 2, 9]");
    EXPECT_FALSE(v->setslice(*vector({9}), 5, 0));
    EXPECT_FALSE(v->setslice(*vector({9}), -3, 2)) << "the end is below 0";
    EXPECT_FALSE(v->setslice(*vector({9}), 2, -1));
    EXPECT_EQ(shape(v), "[0, 1, 2, 9]");
    EXPECT_TRUE(v->setslice(*vector({7}), -1, 1)) << "the end is 0";
    EXPECT_EQ(shape(v), "[7, 0, 1, 2, 9]");
    EXPECT_TRUE(v->setslice(*vector(), 0, max_int));
    EXPECT_EQ(shape(v), "[]");
}

TEST_F(VectorObj, setslice_uses_only_values_of_the_entry_type) {
    vectorref const v = ints(2);
    v->set_entrytype(&cat::type_int());
    EXPECT_TRUE(v->setslice(*vector({"a", 5, cat::nil(), 6}), 0, 2));
    EXPECT_EQ(shape(v), "[5, 6]");
}

TEST_F(VectorObj, setslice_from_itself) {
    vectorref const v = ints(3);
    EXPECT_TRUE(v->setslice(*v, 0, 1));
    EXPECT_EQ(shape(v), "[0, 1, 2, 1, 2]");
}

// --- comparing

TEST_F(VectorObj, vectors_are_equal_by_their_values_in_order) {
    EXPECT_TRUE(vector({1, "a"})->equal(*vector({1, "a"})));
    EXPECT_FALSE(vector({1, "a"})->equal(*vector({"a", 1})));
    EXPECT_FALSE(vector({1})->equal(*vector({1, 2})));
    EXPECT_FALSE(vector({1})->equal(*set({1}))) << "a set has another type";
    objref same_values = map({{"x", 1}, {"y", 2}});
    EXPECT_TRUE(cTomVector::m_equal(*vector({1, 2}), same_values)) << "keys aren't compared";
    objref five = of(5);
    EXPECT_FALSE(cTomVector::m_equal(*vector(), five));
}

TEST_F(VectorObj, methods_refuse_objects_that_are_not_vectors) {
    objref const five = of(5);
    objref key = of(0);
    objref value = of(1);
    EXPECT_FALSE(cTomVector::setattr(*five, key, value));
    EXPECT_FALSE(cTomVector::m_equal(*five, value));
    objref null;
    EXPECT_FALSE(cTomVector::m_assign(*vector(), null));
    EXPECT_TRUE(cTomVector::m_add(*vector(), null));
}

constinit int own_reads = 0;
objref own_getattr(objref, objref key) {
    own_reads += cat::as_index(key);
    return cat::nil();
}

TEST_F(VectorObj, an_integer_index_returns_the_same_as_getattr) {
    vectorref const v = vector({5, "a", 7});
    for (int i : {-1, 0, 1, 2, 3}) EXPECT_EQ(*v / i, v->getattr(of(i))) << i;
    v->datamap().vect_erase(0);
    for (int i : {-1, 0, 1, 2}) EXPECT_EQ(*v / i, v->getattr(of(i))) << i;
    ASSERT_TRUE(v->set_omember("getattr", make<cExeMember>(own_getattr)));
    own_reads = 0;
    EXPECT_EQ(*v / 7, cat::nil());
    EXPECT_EQ(own_reads, 7);
}

} // namespace

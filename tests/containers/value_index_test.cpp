// Searches for a value through an index: the result always equals that of cAttrHash::findvalue.
#include "containers/value_index.h"

#include "core/cscalar.h"
#include "tests/core/hash_support.h"
#include "tests/support/fixture.h"

#include <limits>
#include <random>

namespace {

class ValueIndex : public QrvTest {
  protected:
    cAttrHash hash{nullptr};
    cValueIndex index{hash};

    void expect_same_as_walk(objref const &value) {
        EXPECT_EQ(index.find(*value), hash.findvalue(value)) << short_text(value);
    }
};

objref any_value(std::mt19937 &random) {
    int const number = static_cast<int>(random() % 30);
    switch (random() % 7) {
    case 0:
        return cat::of(number % 2 == 0);
    case 1:
        return cat::of("t" + std::to_string(number));
    case 2:
        return cat::of(number * 0.5);
    case 3:
        return cat::of(std::numeric_limits<float>::quiet_NaN());
    case 4:
        return random() % 4 ? cat::nil() : cat::btrue();
    default:
        return cat::of(number);
    }
}

} // namespace

TEST_F(ValueIndex, finds_the_first_of_equal_values) {
    for (int value : {5, 6, 5}) hash.vect_append(cat::of(value));
    EXPECT_EQ(index.find(*cat::of(5)), hash.find(0));
    EXPECT_EQ(index.find(*cat::of(7)), nullptr);
    hash.vect_append(cat::of(7));
    EXPECT_EQ(index.find(*cat::of(7)), hash.find(3));
    EXPECT_EQ(index.find(*cat::of(7.0)), nullptr);
    EXPECT_EQ(index.find(*cat::of("7")), nullptr);
}

TEST_F(ValueIndex, finds_what_a_walk_finds_after_random_changes) {
    std::mt19937 random(3);
    for (int i = 0; i < 4000; ++i) {
        int const key = static_cast<int>(random() % 100);
        switch (random() % 8) {
        case 0:
            hash.delitem(cat::of(key));
            break;
        case 1:
            hash.insert(cat::of(key + 1000), any_value(random), hash.first());
            break;
        case 2:
            hash.rename(cat::of(key), cat::of(key + 1));
            break;
        default:
            hash.vect_append(any_value(random));
            break;
        }
        if (hash.used() > 120) hash.clear();
        index.find(*any_value(random));
        index.find(*any_value(random));
        // The index does not notice values that insert and rename replace.
        index.forget();
        for (int j = 0; j < 4; ++j) expect_same_as_walk(any_value(random));
    }
}

TEST_F(ValueIndex, notices_removed_and_moved_nodes) {
    for (int value : {5, 6, 5}) hash.vect_append(cat::of(value));
    EXPECT_EQ(index.find(*cat::of(5)), hash.find(0));
    hash.delitem(cat::of(0));
    EXPECT_EQ(index.find(*cat::of(5)), hash.find(2));
    hash.mapitem(cat::of(9), cat::of(6));
    hash.insert(cat::of(9), cat::of(6), hash.first());
    EXPECT_EQ(index.find(*cat::of(6)), hash.find(9));
    hash.clear();
    EXPECT_EQ(index.find(*cat::of(6)), nullptr);
}

TEST_F(ValueIndex, forget_discards_changed_values) {
    objref const value = cat::of(5);
    hash.vect_append(value);
    EXPECT_EQ(index.find(*cat::of(6)), nullptr);
    val<int>(value) = 6;
    index.forget();
    EXPECT_EQ(index.find(*cat::of(6)), hash.find(0));
    EXPECT_EQ(index.find(*cat::of(5)), nullptr);
}

TEST_F(ValueIndex, an_equal_method_that_replaces_the_librarys_is_called) {
    static int asked;
    asked = 0;
    cTypeObj &type = cat::type_int();
    objref const before = type.tmember("equal");
    hash.vect_append(cat::of(5));
    type.set_tmember("equal", make<cExeMember>(+[](cObj &, objref &) {
                         ++asked;
                         return true;
                     }));
    EXPECT_EQ(index.find(*cat::of(77)), hash.find(0));
    EXPECT_EQ(asked, 1);
    type.set_tmember("equal", before);
    EXPECT_EQ(index.find(*cat::of(77)), nullptr);
    EXPECT_EQ(index.find(*cat::of(5)), hash.find(0));
}

TEST_F(ValueIndex, objects_of_a_derived_type_are_not_plain) {
    typeref const type = make<cTypeObj>(
        "int2", +[](cTypeObj &t) { t.inherit(cat::type_int()); });
    objref const value = objref::adopt(new cObjD<int>(5, type.get()));
    hash.vect_append(value);
    EXPECT_FALSE(cat::is_plain(*value));
    EXPECT_TRUE(cat::is_plain(*cat::of(5)));
    EXPECT_EQ(index.find(*cat::of(5)), nullptr);
    EXPECT_EQ(index.find(*value), hash.find(0));
}

TEST_F(ValueIndex, finds_two_hundred_thousand_values_only_after_they_were_appended) {
    for (int i = 0; i < 200000; ++i) {
        objref const value = cat::of(i);
        ASSERT_EQ(index.find(*value), nullptr);
        hash.vect_append(value);
        ASSERT_EQ(index.find(*value), hash.last());
    }
}

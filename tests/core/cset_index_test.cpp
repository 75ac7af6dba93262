// The index of a set: after any change of the set or of its values, it finds what a walk finds.
#include "core/cset_index.h"

#include "qrv/containers/csetobj.h"
#include "qrv/containers/cvectorobj.h"
#include "tests/core/hash_support.h"
#include "tests/support/fixture.h"
#include "tests/support/sanitized.h"

#include <deque>
#include <random>

namespace {

class SetIndex : public QrvTest {
  protected:
    void expect_same_as_walk(objref const &value) {
        bool const walked = set->datamap().findvalue(value) != nullptr;
        EXPECT_EQ(cSetIndex::holds(set->datamap(), value), walked) << short_text(value);
        EXPECT_EQ(set->datamap().broken_rule(false), "");
    }
    void fill(int n) {
        for (int i = 0; i < n; ++i) ASSERT_TRUE(set->append(cat::of(i)));
    }

    cRef<cSetObj> const set = make<cSetObj>();
    std::mt19937 random{7};
};

objref any_value(std::mt19937 &random) {
    int const number = static_cast<int>(random() % 40);
    switch (random() % 8) {
    case 0:
        return cat::of(number % 2 == 0);
    case 1:
        return cat::of("t" + std::to_string(number));
    case 2:
        return cat::of(number * 0.5);
    case 3:
        return random() % 4 ? cat::nil() : cat::btrue();
    default:
        return cat::of(number);
    }
}

} // namespace

TEST_F(SetIndex, the_index_finds_what_a_walk_finds_after_random_changes) {
    cRef<cSetObj> const other = make<cSetObj>();
    std::deque<int> outside; // the numbers of objects that refer to a number elsewhere
    int const rounds = test::sanitized ? 2000 : 6000;
    for (int i = 0; i < rounds; ++i) {
        int const size = set->size();
        int const place = size ? static_cast<int>(random() % static_cast<unsigned>(size)) : 0;
        objref const old = set->getattr(cat::of(place));
        objref const fresh = any_value(random);
        switch (random() % 16) {
        case 0:
            set->setattr(cat::of(place), nullptr);
            break;
        case 1:
            set->setattr(cat::of(place), fresh);
            break;
        case 2:
            set->datamap().vect_insert(place, fresh);
            break;
        case 3:
            old->assign(fresh);
            break;
        case 4:
            old->add(fresh);
            break;
        case 5:
            if (old != cat::btrue()) old->convert(fresh); // the constant must not change
            break;
        case 6:
            if (random() % 4 == 0 && old->object_class() == cObjClass::integer)
                val<int>(old) = static_cast<int>(random() % 40);
            break;
        case 7:
            outside.push_back(static_cast<int>(random() % 40));
            set->append(make<cObjDR<int>>(outside[random() % outside.size()]));
            break;
        case 8:
            if (!outside.empty())
                outside[random() % outside.size()] = static_cast<int>(random() % 40);
            break;
        case 9:
            other->append(old);
            break;
        case 10:
            if (objref const twin = old->newref(); cObj::is_good(twin) && random() % 4 == 0)
                if (old != cat::btrue()) twin->assign(fresh);
            break;
        case 11:
            set->datamap().insert(cat::of(place), fresh, set->datamap().first());
            break;
        case 12:
            set->datamap().detach(cat::of(place));
            break;
        case 13:
            if (random() % 8 == 0) set->valref_(cat::of(place)) = fresh;
            break;
        case 14:
            set->add(*other);
            break;
        default:
            set->append(fresh);
            break;
        }
        for (int j = 0; j < 3; ++j) expect_same_as_walk(any_value(random));
        if (set->size() > 90) set->clear();
        if (other->size() > 60) other->clear();
    }
}

TEST_F(SetIndex, a_value_with_an_outside_reference_is_compared_by_walking) {
    fill(20);
    objref const held = set->getattr(cat::of(3));
    int &number = val<int>(held);
    expect_same_as_walk(cat::of(3));
    number = 77;
    expect_same_as_walk(cat::of(77));
    expect_same_as_walk(cat::of(3));
    EXPECT_FALSE(set->append(cat::of(77)));
    EXPECT_TRUE(set->append(cat::of(3)));
}

TEST_F(SetIndex, a_value_with_an_earlier_outside_reference_is_compared_by_walking) {
    fill(20);
    objref const held = cat::of(50);
    int &number = val<int>(held);
    set->append(held);
    number = 51;
    EXPECT_FALSE(set->append(cat::of(51)));
    EXPECT_TRUE(set->append(cat::of(50)));
}

TEST_F(SetIndex, an_entry_with_an_outside_reference_is_compared_by_walking) {
    fill(20);
    objref &place = set->valref_(cat::of(4));
    place = cat::of(0.5);
    expect_same_as_walk(cat::of(4));
    place = cat::of(99);
    EXPECT_FALSE(set->append(cat::of(99)));
}

TEST_F(SetIndex, an_object_of_two_sets_that_changes_is_found_in_both) {
    fill(20);
    cRef<cSetObj> const other = make<cSetObj>();
    other->add(*set);
    objref const shared = set->getattr(cat::of(5));
    EXPECT_EQ(other->getattr(cat::of(5)), shared);
    expect_same_as_walk(cat::of(5));
    shared->assign(cat::of(500));
    expect_same_as_walk(cat::of(500));
    EXPECT_FALSE(other->append(cat::of(500)));
    EXPECT_TRUE(other->append(cat::of(5)));
}

TEST_F(SetIndex, an_object_with_a_new_type_is_no_longer_equal) {
    fill(20);
    typeref const type = make<cTypeObj>(
        "int3", +[](cTypeObj &t) { t.inherit(cat::type_int()); });
    objref const value = set->getattr(cat::of(5));
    value->set_type(type.get());
    expect_same_as_walk(cat::of(5));
    EXPECT_TRUE(set->append(cat::of(5)));
    value->set_type(&cat::type_int());
    expect_same_as_walk(cat::of(5));
}

TEST_F(SetIndex, an_equal_method_of_a_program_is_used_at_once) {
    fill(20);
    expect_same_as_walk(cat::of(5));
    cTypeObj &type = cat::type_int();
    objref const before = type.tmember("equal");
    type.set_tmember("equal", make<cExeMember>(+[](cObj &, objref &) { return true; }));
    EXPECT_FALSE(set->append(cat::of(1000)));
    type.set_tmember("equal", before);
    EXPECT_TRUE(set->append(cat::of(1000)));
}

TEST_F(SetIndex, appends_between_changes_refuse_only_values_in_the_set) {
    int const count = test::sanitized ? 20000 : 100000;
    for (int i = 0; i < count; ++i) {
        ASSERT_TRUE(set->append(cat::of(i)));
        ASSERT_FALSE(set->append(cat::of(i / 2)));
        if (i % 2 == 0) {
            set->setattr(cat::of(set->size() - 1), nullptr); // removes the last value
            ASSERT_TRUE(set->append(cat::of(i)));
        }
        if (i % 3 == 0) set->getattr(cat::of(i / 2))->add(cat::of(2 * count));
        if (i % 3 == 0) set->getattr(cat::of(i / 2))->assign(cat::of(i / 2)); // undoes the change
    }
    EXPECT_EQ(set->size(), count);
}

TEST_F(SetIndex, equal_values_stored_without_append_do_not_slow_searches_down) {
    fill(20);
    int const count = test::sanitized ? 2000 : 20000;
    for (int i = 0; i < count; ++i) {
        set->datamap().vect_append(cat::of("equal"));
        if (i % 100 == 0) expect_same_as_walk(cat::of("equal"));
    }
    EXPECT_TRUE(set->append(cat::of("new")));
}

// With the wrong factor, a hash that only multiplies would put most of the numbers next to each
// other.
TEST_F(SetIndex, numbers_in_a_row_are_spread_over_the_table_with_any_factor) {
    constexpr std::size_t capacity = 1U << 14, filled = capacity / 2, longest_probe = 64;
    std::mt19937_64 factors(5);
    for (int i = 0; i < (test::sanitized ? 30 : 150); ++i) {
        std::uint64_t const factor = factors() | 1;
        for (unsigned const distance : {1U, 2U, 3U, 1000U, 4096U, 1U << 16, 0xFFFFFFFFU}) {
            std::vector<bool> used(capacity);
            std::size_t too_far = 0;
            for (unsigned k = 0; k < filled; ++k) {
                std::size_t at = cSetIndex::spread(k * distance, factor) % capacity, steps = 0;
                for (; used[at]; at = (at + 1) % capacity) ++steps;
                used[at] = true;
                too_far += steps >= longest_probe;
            }
            ASSERT_LT(too_far, 10U) << "factor " << factor << ", distance " << distance;
        }
    }
}

// The vector mode of the attribute hash.
#include "qrv/core/cattrhash.h"

#include "tests/core/hash_support.h"
#include "tests/support/fixture.h"

#include <climits>
#include <cmath>

namespace {

class VectorModeTest : public QrvTest {
  protected:
    cAttrHash hash{nullptr};

    void append(std::initializer_list<int> values) {
        for (int value : values) ASSERT_TRUE(hash.vect_append(cat::of(value)));
    }
};
class VectorModeEdge : public VectorModeTest {};
class VectorMode : public VectorModeTest {};

} // namespace

TEST_F(VectorModeEdge, erasing_at_the_size_is_true_without_effect_and_below_0_is_false) {
    append({10, 11});
    EXPECT_TRUE(hash.vect_erase(2));
    EXPECT_TRUE(hash.vect_erase(INT_MAX));
    EXPECT_FALSE(hash.vect_erase(-1));
    EXPECT_FALSE(hash.vect_erase(INT_MIN));
    EXPECT_EQ(ring(hash), "0=10 1=11 ");
}

TEST_F(VectorModeEdge, inserting_at_the_size_appends_and_beyond_is_false_and_null_erases) {
    append({10, 11});
    EXPECT_TRUE(hash.vect_insert(2, cat::of(12)));
    EXPECT_FALSE(hash.vect_insert(4, cat::of(13)));
    EXPECT_FALSE(hash.vect_insert(-1, cat::of(13)));
    EXPECT_EQ(ring(hash), "0=10 1=11 2=12 ");
    EXPECT_TRUE(hash.vect_insert(1, objref()));
    EXPECT_EQ(ring(hash), "0=10 1=12 ");
    EXPECT_TRUE(hash.vect_insert(0, cat::badfind()));
    EXPECT_EQ(ring(hash), "0=12 ");
    EXPECT_FALSE(hash.vect_insert(0, cat::bad()));
    EXPECT_FALSE(hash.vect_insert(2, objref()));
    EXPECT_TRUE(hash.vect_insert(1, objref()));
    EXPECT_EQ(ring(hash), "0=12 ");
}

TEST_F(VectorModeEdge, after_last_index_counts_strings_as_minus_1) {
    hash.mapitem("a", cat::nil());
    hash.mapitem("b", cat::nil());
    EXPECT_EQ(hash.after_last_index(), 0);
    cAttrHash five(nullptr);
    five.mapitem(cat::of(5), cat::nil());
    EXPECT_EQ(five.after_last_index(), 6);
}

TEST_F(VectorModeEdge, an_empty_hash_is_a_vector) {
    EXPECT_TRUE(hash.is_vector());
    EXPECT_EQ(hash.after_last_index(), 0);
    hash.mapitem("a", cat::nil());
    EXPECT_FALSE(hash.is_vector());
    hash.delitem("a");
    EXPECT_TRUE(hash.is_vector());
}

TEST_F(VectorMode, keys_must_be_the_ints_from_0_in_order) {
    append({1, 2, 3});
    EXPECT_TRUE(hash.is_vector());
    hash.mapitem(cat::of(3.0), cat::nil());
    EXPECT_FALSE(hash.is_vector());
    hash.delitem(cat::of(3.0));
    EXPECT_TRUE(hash.is_vector());
    hash.insert(cat::of(2), cat::nil(), hash.first());
    EXPECT_FALSE(hash.is_vector()); // 2 0 1
    hash.insert(cat::of(2), cat::nil(), hash.find(0));
    hash.insert(cat::of(0), cat::nil(), hash.first());
    hash.insert(cat::of(1), cat::nil(), hash.find(2));
    EXPECT_TRUE(hash.is_vector()); // 0 1 2 again
    EXPECT_EQ(hash.findpos(2), hash.find(2));
    hash.delitem(cat::of(0));
    EXPECT_FALSE(hash.is_vector());
    EXPECT_EQ(hash.findpos(0), hash.find(1));
}

TEST_F(VectorMode, a_floating_key_counts_by_its_truncated_value) {
    hash.mapitem(cat::of(7.9), cat::nil());
    EXPECT_EQ(hash.after_last_index(), 8);
    hash.mapitem(cat::of(-3.5), cat::nil());
    EXPECT_EQ(hash.after_last_index(), 8);
    hash.mapitem(cat::of(12.5f), cat::nil());
    EXPECT_EQ(hash.after_last_index(), 13);
    hash.mapitem(cat::of(std::nan("")), cat::nil());
    hash.mapitem(cat::of(1e30), cat::nil()); // both keys count as the lowest int
    EXPECT_EQ(hash.after_last_index(), 13);
}

TEST_F(VectorMode, the_lowest_int_follows_the_greatest) {
    hash.mapitem(cat::of(INT_MAX), cat::nil());
    EXPECT_EQ(hash.after_last_index(), INT_MIN);
    EXPECT_TRUE(hash.vect_append(cat::of(1)));
    EXPECT_EQ(val<int>(hash.getitem(cat::of(INT_MIN))), 1);
    EXPECT_TRUE(hash.vect_append(cat::of(2))); // overwrites
    EXPECT_EQ(hash.used(), 2u);
    EXPECT_EQ(val<int>(hash.getitem(cat::of(INT_MIN))), 2);
}

TEST_F(VectorMode, negative_keys_do_not_count) {
    hash.mapitem(cat::of(-5), cat::nil());
    EXPECT_EQ(hash.after_last_index(), 0);
    hash.mapitem(cat::of(-1), cat::nil());
    EXPECT_EQ(hash.after_last_index(), 0);
    hash.delitem(cat::of(-1));
    EXPECT_EQ(hash.after_last_index(), 0);
}

TEST_F(VectorMode, the_greatest_index_is_right_after_removals) {
    for (int key : {3, 9, 5}) hash.mapitem(cat::of(key), cat::nil());
    hash.delitem(cat::of(9));
    EXPECT_EQ(hash.after_last_index(), 6);
    hash.delitem(cat::of(5));
    hash.mapitem(cat::of(4), cat::nil());
    EXPECT_EQ(hash.after_last_index(), 5);
    EXPECT_EQ(hash.broken_rule(true), "");
}

TEST_F(VectorMode, append_returns_false_on_refusal_and_a_kill_value_removes_nothing) {
    append({1});
    EXPECT_FALSE(hash.vect_append(cat::bad()));
    EXPECT_TRUE(hash.vect_append(objref()));
    EXPECT_TRUE(hash.vect_append(cat::badfind()));
    EXPECT_EQ(ring(hash), "0=1 ");
    EXPECT_TRUE(hash.vect_append(cat::nil()));
    EXPECT_EQ(ring(hash), "0=1 1=nil ");
}

TEST_F(VectorMode, append_on_a_map_uses_the_index_above_the_greatest) {
    hash.mapitem("a", cat::nil());
    append({1});
    hash.mapitem(cat::of(6), cat::nil());
    append({2});
    EXPECT_EQ(ring(hash), "a=nil 0=1 6=nil 7=2 ");
}

TEST_F(VectorMode, erasing_moves_values_and_not_keys) {
    append({10, 11, 12, 13});
    std::uint32_t const anid = hash.findpos(1)->anid();
    EXPECT_TRUE(hash.vect_erase(1));
    EXPECT_EQ(ring(hash), "0=10 1=12 2=13 ");
    EXPECT_EQ(hash.findpos(1)->anid(), anid);
    EXPECT_TRUE(hash.vect_erase(2));
    EXPECT_TRUE(hash.vect_erase(0));
    EXPECT_EQ(ring(hash), "0=12 ");
    EXPECT_TRUE(hash.vect_erase(0));
    EXPECT_TRUE(hash.empty());
}

TEST_F(VectorMode, erasing_in_a_map_is_by_position) {
    for (char const *key : {"a", "b", "c"}) hash.mapitem(key, cat::of(key));
    EXPECT_TRUE(hash.vect_erase(0));
    EXPECT_EQ(ring(hash), "a=b b=c ");
}

TEST_F(VectorMode, inserting_moves_the_following_values) {
    append({10, 11, 12});
    EXPECT_TRUE(hash.vect_insert(1, cat::of(99)));
    EXPECT_EQ(ring(hash), "0=10 1=99 2=11 3=12 ");
    EXPECT_TRUE(hash.vect_insert(0, cat::nil()));
    EXPECT_EQ(ring(hash), "0=nil 1=10 2=99 3=11 4=12 ");
    cAttrHash map(nullptr);
    map.mapitem("a", cat::of(1));
    EXPECT_TRUE(map.vect_insert(0, cat::of(0)));
    EXPECT_EQ(ring(map), "a=0 0=1 ");
}

TEST_F(VectorMode, a_node_with_a_locked_type_keeps_its_value_when_others_move) {
    append({10, 11});
    hash.vect_append(cat::of("text"));
    hash.find(1)->cObjBase::flags(2);
    cErrorLog errors;
    EXPECT_TRUE(hash.vect_erase(0));
    EXPECT_EQ(ring(hash), "0=11 1=11 ");
    EXPECT_EQ(errors.text(),
              "0x40400000 cAttrNode, key: 1  value type: int  Flags do not allow operator=\n");
}

TEST_F(VectorMode, moving_a_stored_null_removes_an_index) {
    append({10, 11, 12, 13});
    hash.find(2)->valref_() = objref();
    EXPECT_TRUE(hash.vect_erase(0)); // 0 gets 11, 1 gets the null and is removed
    EXPECT_EQ(ring(hash), "0=11 2=null 3=13 ");
    EXPECT_EQ(hash.broken_rule(true), "");
    EXPECT_FALSE(hash.vect_insert(0, cat::of(9))); // the null removes the new index
    EXPECT_EQ(ring(hash), "0=11 2=null 4=13 ");
    EXPECT_EQ(hash.broken_rule(true), "");
}

TEST_F(VectorMode, renumbering_keeps_order_and_values) {
    hash.mapitem("b", cat::of(1));
    hash.mapitem(cat::of(0), cat::nil());
    hash.mapitem(cat::of(1.5), cat::of(3));
    hash.set_vector();
    EXPECT_EQ(ring(hash), "0=1 1=nil 2=3 ");
    EXPECT_TRUE(hash.is_vector());
    cAttrNode const *const first = hash.first();
    hash.set_vector();
    EXPECT_EQ(hash.first(), first); // nothing to do
}

TEST_F(VectorMode, renumbering_drops_values_that_cannot_be_stored) {
    hash.mapitem("a", cat::of(1));
    hash.insert(cat::of("b"), objref(), nullptr);
    hash.insert(cat::of("c"), cat::bad(), nullptr);
    hash.insert(cat::of("d"), cat::badfind(), nullptr);
    hash.mapitem("e", cat::of(2));
    hash.set_vector();
    EXPECT_EQ(ring(hash), "0=1 1=2 ");
}

TEST_F(VectorMode, aliased_values_survive_moves) {
    append({10, 11, 12});
    EXPECT_TRUE(hash.vect_insert(0, hash.find(2)->valref()));
    EXPECT_EQ(ring(hash), "0=12 1=10 2=11 3=12 ");
    EXPECT_TRUE(hash.vect_append(hash.find(0)->valref()));
    EXPECT_EQ(ring(hash), "0=12 1=10 2=11 3=12 4=12 ");
}

TEST_F(VectorMode, a_value_may_clear_the_hash_while_values_move) {
    append({10, 11});
    hash.vect_insert(0, on_destroy([this] { hash.clear(); }));
    EXPECT_TRUE(hash.vect_erase(0));
    EXPECT_TRUE(hash.empty());
    EXPECT_EQ(hash.broken_rule(true), "");
}

TEST_F(VectorMode, appending_and_positions_need_no_walk) {
    constexpr int count = 100000;
    std::uint64_t const before = cAttrHash::probe_count();
    for (int i = 0; i < count; ++i) hash.vect_append(cat::nil());
    for (unsigned int i = 0; i < count; i += 7)
        ASSERT_EQ(hash.findpos(i)->key_as_index(), static_cast<int>(i));
    for (int i = 0; i < count / 2; ++i) hash.vect_erase(static_cast<int>(hash.used()) - 1);
    EXPECT_EQ(hash.after_last_index(), count / 2);
    EXPECT_LT(cAttrHash::probe_count() - before, 12u * count);
}

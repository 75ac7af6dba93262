// Insertion without user code: the same effect as mapitem.
#include "core/cattrhash_insert.h"

#include "tests/core/hash_support.h"
#include "tests/support/fixture.h"

#include <climits>

namespace {

class HashInsert : public QrvTest {
  protected:
    cAttrHash hash{nullptr};

    void TearDown() override { EXPECT_EQ(hash.broken_rule(true), ""); }
};

} // namespace

TEST_F(HashInsert, creates_the_same_entries_as_mapitem) {
    EXPECT_TRUE(cAttrInsert::text(hash, "a", cat::of(1)).is_new);
    EXPECT_TRUE(cAttrInsert::number(hash, 7, cat::of(2)).is_new);
    EXPECT_TRUE(cAttrInsert::adopt(hash, cat::of("b"), cat::of(3)).is_new);
    EXPECT_FALSE(cAttrInsert::append(hash, cat::of(4)));
    EXPECT_TRUE(hash.vect_append(cat::of(4)));
    EXPECT_EQ(ring(hash), "a=1 7=2 b=3 8=4 ");
    for (cAttrNode *node = hash.first(); node; node = hash.next(node)) {
        EXPECT_EQ(node->map(), &hash);
        EXPECT_EQ(hash.find(node->key()), node);
        EXPECT_EQ(node->key()->refs(), 1u);
        EXPECT_NE(node->key()->obid(), 0u);
    }
}

TEST_F(HashInsert, does_not_change_an_existing_entry) {
    hash.mapitem("a", cat::of(1));
    cAttrInsert::cPlace const place = cAttrInsert::text(hash, "a", cat::of(2));
    EXPECT_FALSE(place.is_new);
    EXPECT_EQ(place.node, hash.first());
    EXPECT_FALSE(cAttrInsert::adopt(hash, cat::of("a"), cat::of(3)).is_new);
    EXPECT_EQ(ring(hash), "a=1 ");
}

TEST_F(HashInsert, the_key_object_is_stored_itself) {
    objref key = cat::of("a");
    cObj const *const object = key.get();
    cAttrInsert::adopt(hash, std::move(key), cat::of(1));
    EXPECT_EQ(hash.first()->key(), object);
}

TEST_F(HashInsert, a_string_with_a_nul_is_another_key) {
    std::string const text("a\0b", 3);
    cAttrInsert::text(hash, "a", cat::of(1));
    EXPECT_TRUE(cAttrInsert::text(hash, text, cat::of(2)).is_new);
    EXPECT_FALSE(cAttrInsert::text(hash, std::string_view("a\0b", 3), cat::of(3)).is_new);
    EXPECT_EQ(val<int>(hash.getitem(text)), 2);
}

TEST_F(HashInsert, is_not_ready_with_keys_of_other_types) {
    cHostileType const hostile;
    EXPECT_TRUE(cAttrInsert::is_ready(hash));
    hash.mapitem(hostile.key(1), cat::of(1));
    EXPECT_FALSE(cAttrInsert::is_ready(hash));
    hash.delitem(hostile.key(1));
    EXPECT_TRUE(cAttrInsert::is_ready(hash));
}

TEST_F(HashInsert, append_after_the_greatest_int_overwrites_the_lowest) {
    hash.mapitem(cat::of(INT_MIN), cat::of(1));
    hash.mapitem(cat::of(INT_MAX), cat::of(2));
    EXPECT_FALSE(cAttrInsert::append(hash, cat::of(3)));
    EXPECT_TRUE(hash.vect_append(cat::of(3)));
    EXPECT_EQ(ring(hash), "-2147483648=3 2147483647=2 ");
}

TEST_F(HashInsert, append_uses_the_int_after_the_greatest) {
    EXPECT_TRUE(cAttrInsert::append(hash, cat::of(1)));
    hash.mapitem(cat::of(7), cat::of(2));
    EXPECT_TRUE(cAttrInsert::append(hash, cat::of(3)));
    EXPECT_EQ(ring(hash), "0=1 7=2 8=3 ");
}

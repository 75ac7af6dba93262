// The attribute hash with hostile callers: aliased arguments, values and hooks that change the
// table that contains them, colliding keys, and many changes of a nearly empty table.
#include "qrv/core/cattrhash.h"

#include "tests/core/hash_support.h"
#include "tests/support/fixture.h"

#include <limits>

namespace {

class HostileKeyTest : public QrvTest {
  protected:
    cAttrHash hash{nullptr};

    void fill(std::initializer_list<char const *> keys) {
        int value = 0;
        for (char const *key : keys) hash.mapitem(key, cat::of(++value));
    }
    void sound() { EXPECT_EQ(hash.broken_rule(true), ""); }
};
class HostileEdge : public HostileKeyTest {};
class HashHostile : public HostileKeyTest {};

} // namespace

// --- aliased arguments

TEST_F(HashHostile, a_key_may_belong_to_the_removed_node) {
    fill({"a", "b", "c", "d"});
    EXPECT_TRUE(hash.delitem(hash.first()->key()));
    EXPECT_TRUE(hash.mapitem(hash.first()->key(), objref()));
    EXPECT_EQ(hash.erase(hash.first()->key()), hash.find("d"));
    EXPECT_TRUE(hash.setitem(hash.first()->key(), hash.first()->valref()));
    hash.rename(hash.first()->key(), hash.first()->key());
    EXPECT_EQ(ring(hash), "d=4 ");
    hash.mapitem("e", cat::of(5));
    hash.rename(hash.first()->key(), hash.last()->key());
    EXPECT_EQ(ring(hash), "e=4 ");
    hash.insert(hash.first()->key(), hash.first()->valref(), hash.first());
    hash.copyitem(hash.first()->key(), hash.first()->valref(), true);
    *hash.first() = hash.first()->valref();
    *hash.first() = *hash.first();
    EXPECT_EQ(ring(hash), "e=4 ");
    sound();
}

// --- values with destructors

TEST_F(HashHostile, a_destroyed_value_may_remove_other_keys) {
    fill({"a", "b", "c", "d"});
    hash.mapitem("b", on_destroy([this] {
                     hash.delitem("a");
                     hash.delitem("c");
                     hash.mapitem("x", cat::of(9));
                 }));
    EXPECT_TRUE(hash.delitem("b"));
    EXPECT_EQ(ring(hash), "d=4 x=9 ");
    sound();
}

TEST_F(HashHostile, erase_returns_null_if_the_following_node_was_removed_too) {
    fill({"a", "b", "c"});
    hash.mapitem("a", on_destroy([this] { hash.delitem("b"); }));
    EXPECT_EQ(hash.erase(cat::of("a")), nullptr);
    EXPECT_EQ(ring(hash), "c=3 ");
}

TEST_F(HashHostile, a_replaced_value_may_remove_its_own_key) {
    fill({"a", "b"});
    auto const will = [this] { return on_destroy([this] { hash.delitem("a"); }); };
    hash.mapitem("a", will());
    EXPECT_TRUE(hash.mapitem("a", cat::of(1)));
    EXPECT_EQ(ring(hash), "b=2 ");
    hash.mapitem("a", will());
    EXPECT_EQ(&(*hash.find("a") = cat::of(1)), &nil_attr());
    hash.mapitem("a", will());
    EXPECT_TRUE(hash.setitem("a", cat::of(1)));
    hash.mapitem("a", will());
    EXPECT_EQ(hash.insert(cat::of("a"), cat::of(1), hash.first()), nullptr);
    hash.mapitem("a", will());
    hash.rename(cat::of("b"), cat::of("a"));
    EXPECT_EQ(ring(hash), "");
    sound();
}

TEST_F(HashHostile, clear_continues_until_nothing_is_left) {
    int rounds = 3;
    std::function<void()> again = [&] {
        if (rounds-- > 0) hash.mapitem(cat::of(rounds), on_destroy(again));
    };
    fill({"a", "b"});
    hash.mapitem("a", on_destroy(again));
    hash.clear();
    EXPECT_TRUE(hash.empty());
    EXPECT_EQ(rounds, -1);
    fill({"a", "b", "c"});
    hash.mapitem("a", on_destroy([this] { hash.clear(); }));
    hash.clear();
    EXPECT_TRUE(hash.empty());
    sound();
}

TEST_F(HashHostile, a_hash_may_lose_its_last_owner_during_each_operation) {
    for (int operation = 0; operation < 6; ++operation) {
        hashref owner = make<cAttrHash>(nullptr);
        cAttrHash &mine = *owner;
        mine.mapitem("a", on_destroy([&owner] { owner = nullptr; }));
        mine.mapitem("b", cat::of(1));
        switch (operation) {
        case 0:
            mine.clear();
            break;
        case 1:
            mine.delitem("a");
            break;
        case 2:
            mine.mapitem("a", cat::of(1));
            break;
        case 3:
            mine.vect_erase(0);
            break;
        case 4:
            mine.set_vector();
            break;
        case 5:
            mine.rename(cat::of("b"), cat::of("a"));
            break;
        }
        owner = nullptr;
    }
}

TEST_F(HashHostile, a_hash_that_is_shared_while_it_is_destroyed_is_destroyed_once) {
    hashref owner = make<cAttrHash>(nullptr);
    cAttrHash *const mine = owner.get();
    int calls = 0;
    owner->mapitem("a", on_destroy([mine, &calls] {
                       hashref const again = hashref::share(mine);
                       again->delitem("b");
                       mine->clear();
                       ++calls;
                   }));
    owner->mapitem("b", cat::of(1));
    owner = nullptr;
    EXPECT_EQ(calls, 1);
}

TEST_F(HashHostile, the_source_of_an_assignment_may_shrink_meanwhile) {
    cAttrHash source(nullptr);
    cHostileType const hostile;
    source.mapitem(hostile.key(1), cat::of(1));
    source.mapitem(hostile.key(2), cat::of(2));
    cHostileType::in_clone = [&] { source.clear(); };
    hash = source;
    EXPECT_EQ(hash.used(), 1u);
    EXPECT_EQ(val<int>(hash.first()->valref()), 1);
    sound();
}

// --- hooks that change the table

TEST_F(HashHostile, hooks_are_called_once_for_each_visited_node) {
    cHostileType const hostile;
    for (int i = 0; i < 50; ++i) hash.mapitem(hostile.key(i), cat::nil());
    EXPECT_EQ(cHostileType::hash_calls, 50);
    EXPECT_EQ(cHostileType::heq_calls, 50 * 49 / 2);
    EXPECT_EQ(cHostileType::clone_calls, 50);
    cHostileType::reset();
    EXPECT_EQ(hash.find(hostile.key(49)), hash.last());
    EXPECT_EQ(hash.find(hostile.key(50)), nullptr);
    EXPECT_EQ(cHostileType::hash_calls, 2);
    EXPECT_EQ(cHostileType::heq_calls, 100);
}

TEST_F(HashHostile, growth_computes_no_hash_again) {
    cHostileType const hostile;
    for (int i = 0; i < 77; ++i) hash.mapitem(hostile.key(i), cat::nil());
    cHostileType::reset();
    hash.mapitem("text", cat::nil());
    EXPECT_EQ(hash.slots(), 197u);
    EXPECT_EQ(cHostileType::hash_calls, 0);
    sound();
}

TEST_F(HashHostile,
       texts_and_ints_are_compared_without_a_call_and_never_with_foreign_keys_wrongly) {
    cHostileType const hostile;
    fill({"a", "b"});
    hash.mapitem(cat::of(7), cat::of(3)); // the hash of all hostile keys
    hash.mapitem(hostile.key(7), cat::of(4));
    EXPECT_EQ(val<int>(hash.getitem(cat::of(7))), 3);
    EXPECT_EQ(val<int>(hash.getitem(hostile.key(7))), 4);
    EXPECT_EQ(val<int>(hash.getitem("b")), 2);
    EXPECT_EQ(hash.find(7), hash.find(cat::of(7)));
    EXPECT_EQ(hash.find("x"), nullptr);
    sound();
}

TEST_F(HashHostile, a_hook_may_grow_the_table_during_the_search) {
    cHostileType const hostile;
    for (int i = 0; i < 3; ++i) hash.mapitem(hostile.key(i), cat::of(i));
    auto const grow = [this] {
        for (int i = 0; i < 500; ++i) hash.mapitem(cat::of(i), cat::nil());
    };
    cHostileType::in_heq = grow;
    EXPECT_EQ(val<int>(hash.getitem(hostile.key(2))), 2);
    sound();
    hash.clear();
    for (int i = 0; i < 3; ++i) hash.mapitem(hostile.key(i), cat::of(i));
    cHostileType::in_heq = grow;
    EXPECT_TRUE(hash.mapitem(hostile.key(9), cat::of(9)));
    EXPECT_EQ(val<int>(hash.getitem(hostile.key(9))), 9);
    cHostileType::in_hash = [this] { hash.clear(); };
    EXPECT_TRUE(hash.mapitem(hostile.key(10), cat::of(10)));
    EXPECT_EQ(hash.used(), 1u);
    sound();
}

TEST_F(HashHostile, a_hook_may_clear_the_table_during_the_search) {
    cHostileType const hostile;
    auto const arm = [&] {
        cHostileType::reset();
        hash.clear();
        for (int i = 0; i < 4; ++i) hash.mapitem(hostile.key(i), cat::of(i));
        cHostileType::in_heq = [this] { hash.clear(); };
    };
    arm();
    EXPECT_EQ(hash.find(hostile.key(3)), nullptr);
    arm();
    EXPECT_TRUE(hash.delitem(hash.last()->key()));
    arm();
    EXPECT_TRUE(hash.mapitem(hash.last()->key(), cat::of(1)));
    EXPECT_EQ(hash.used(), 1u);
    arm();
    EXPECT_EQ(hash.posofkey(hostile.key(3)), -1);
    arm();
    hash.rename(hash.last()->key(), cat::of("x"));
    arm();
    cAttrNode *const inserted = hash.insert(hash.last()->key(), cat::of(1), hash.first());
    EXPECT_EQ(inserted, hash.first());
    EXPECT_EQ(hash.used(), 1u);
    sound();
}

TEST_F(HashHostile, a_clone_method_may_insert_the_same_key) {
    cHostileType const hostile;
    cHostileType::in_clone = [&] { hash.mapitem(hostile.key(5), cat::of(1)); };
    EXPECT_TRUE(hash.mapitem(hostile.key(5), cat::of(2)));
    EXPECT_EQ(hash.used(), 1u);
    EXPECT_EQ(val<int>(hash.first()->valref()), 2);
    cHostileType::in_clone = [&] {
        for (int i = 100; i < 400; ++i) hash.mapitem(cat::of(i), cat::nil());
    };
    EXPECT_TRUE(hash.mapitem(hostile.key(6), cat::of(3)));
    EXPECT_EQ(val<int>(hash.getitem(hostile.key(6))), 3);
    sound();
}

TEST_F(HashHostile, a_clone_method_may_remove_the_key_that_is_renamed) {
    cHostileType const hostile;
    fill({"a", "b"});
    cHostileType::in_clone = [this] { hash.delitem("a"); };
    hash.rename(cat::of("a"), hostile.key(1));
    EXPECT_EQ(hash.find("a"), nullptr);
    sound();
}

TEST_F(HashHostile, a_hook_that_throws_leaves_the_table_in_order) {
    cHostileType const hostile;
    hash.mapitem(hostile.key(1), cat::of(1));
    auto const fail = [] { throw cErr(5, "thrown by a hook"); };
    cHostileType::in_hash = fail;
    EXPECT_THROW(hash.mapitem(hostile.key(2), cat::of(2)), cErr);
    cHostileType::in_heq = fail;
    EXPECT_THROW(hash.mapitem(hostile.key(2), cat::of(2)), cErr);
    cHostileType::in_clone = fail; // the clone fails, so the key is shared
    objref const key = hostile.key(2);
    EXPECT_TRUE(hash.mapitem(key, cat::of(2)));
    EXPECT_EQ(hash.last()->key(), key);
    sound();
}

TEST_F(HashHostile, an_equal_method_may_remove_its_value_from_the_hash) {
    static cAttrHash *table;
    table = &hash;
    typeref const type = make<cTypeObj>(
        "vanishing", +[](cTypeObj &t) {
            t.set_tmember("equal", make<cExeMember>(+[](cObj &, objref &) {
                              table->clear();
                              return true;
                          }));
        });
    auto const value = [&] { return objref::adopt(new cObjD<int>(1, type.get())); };
    hash.mapitem("a", value());
    hash.mapitem("b", value());
    EXPECT_EQ(hash.findvalue(value()), nullptr);
    EXPECT_TRUE(hash.empty());
}

TEST_F(HashHostile, nan_keys_match_in_every_search) {
    double const nan = std::numeric_limits<double>::quiet_NaN();
    for (int i = 0; i < 300; ++i) hash.mapitem(cat::of(i * 0.5), cat::nil());
    hash.mapitem(cat::of(nan), cat::of(1));
    EXPECT_NE(hash.find(cat::of(nan)), nullptr);
    hash.mapitem(cat::of(0.0), cat::of(2));
    hash.mapitem(cat::of(-0.0), cat::of(3));
    for (int i = 0; i < 300; ++i) hash.delitem(cat::of(i * 0.5));
    hash.delitem(cat::of(nan));
    sound();
}

// --- many changes, and keys chosen to collide

TEST_F(HostileEdge, tombstones_never_use_up_the_empty_slots) {
    constexpr int rounds = 1000000;
    hash.mapitem("stays", cat::of(1));
    std::uint64_t const before = cAttrHash::probe_count();
    for (int i = 0; i < rounds; ++i) {
        ASSERT_TRUE(hash.mapitem(cat::of(i), cat::nil()));
        hash.delitem(cat::of(i));
        ASSERT_EQ(hash.find(-1 - i), nullptr);
    }
    EXPECT_EQ(ring(hash), "stays=1 ");
    EXPECT_EQ(hash.slots(), 97u);
    EXPECT_LT(cAttrHash::probe_count() - before, 20u * rounds); // three searches a round
    sound();
}

TEST_F(HashHostile, searches_for_absent_keys_are_short_after_a_large_table_was_cleared) {
    auto const text = [](int i) { return "key" + std::to_string(i); };
    for (int i = 0; i < 100000; ++i) hash.mapitem(text(i), cat::nil());
    hash.clear();
    std::uint64_t const before = cAttrHash::probe_count();
    for (int i = 0; i < 1000; ++i) hash.find(text(-1 - i));
    EXPECT_LT(cAttrHash::probe_count() - before, 8000u);
    sound();
}

TEST_F(HashHostile, the_colliding_strings_of_these_tests_collide) {
    objref const first = cat::of(colliding_text(0));
    for (unsigned int i = 1; i < 1000; ++i) {
        objref const other = cat::of(colliding_text(i * 131));
        ASSERT_EQ(cat::hash_string(first), cat::hash_string(other));
        ASSERT_FALSE(cat::heq_string(first, other));
    }
}

TEST_F(HashHostile, strings_chosen_to_collide_cost_little_more_than_others) {
    unsigned int const count = 100000;
    auto const cost = [=](auto text) {
        cAttrHash table(nullptr);
        std::uint64_t const before = cAttrHash::probe_count();
        for (unsigned int i = 0; i < count; ++i) table.mapitem(text(i), cat::nil());
        for (unsigned int i = 0; i < count; ++i) EXPECT_NE(table.find(text(i)), nullptr);
        EXPECT_EQ(table.used(), count);
        EXPECT_EQ(table.first()->key_as_string(), text(0));
        EXPECT_EQ(table.last()->key_as_string(), text(count - 1));
        return cAttrHash::probe_count() - before;
    };
    std::uint64_t const ordinary = cost([](unsigned int i) { return "key" + std::to_string(i); });
    std::uint64_t const chosen = cost([](unsigned int i) { return colliding_text(i); });
    EXPECT_LT(chosen, 10 * ordinary);
}

TEST_F(HashHostile, a_seeded_table_still_finds_all_kinds_of_keys) {
    cHostileType const hostile;
    hash.mapitem(cat::of(5), cat::of(1));
    hash.mapitem(hostile.key(5), cat::of(2));
    hash.mapitem(cat::of(1.5), cat::of(3));
    hash.mapitem(cat::of(2.5f), cat::of(4));
    EXPECT_FALSE(cAttrHashProbe::seeded(hash));
    for (unsigned int i = 0; i < 1000; ++i) hash.mapitem(colliding_text(i), cat::nil());
    EXPECT_TRUE(cAttrHashProbe::seeded(hash));
    EXPECT_EQ(val<int>(hash.getitem(cat::of(5))), 1);
    EXPECT_EQ(val<int>(hash.getitem(hostile.key(5))), 2);
    EXPECT_EQ(val<int>(hash.getitem(cat::of(1.5))), 3);
    EXPECT_EQ(val<int>(hash.getitem(cat::of(2.5f))), 4);
    EXPECT_NE(hash.find(colliding_text(999)), nullptr);
    EXPECT_EQ(hash.find(colliding_text(1000)), nullptr);
    sound();
}

TEST_F(HashHostile, ordinary_tables_are_not_seeded) {
    for (int i = 0; i < 50000; ++i) {
        hash.mapitem("key" + std::to_string(i), cat::nil());
        hash.mapitem(cat::of(i * 0.25), cat::nil());
    }
    EXPECT_FALSE(cAttrHashProbe::seeded(hash));
    sound();
}

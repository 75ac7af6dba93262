// The forms of the attribute hash that replace the table, which must be invisible.
#include "qrv/core/cattrhash.h"

#include "qrv/containers/cmapobj.h"
#include "qrv/core/cexe.h"
#include "tests/core/hash_support.h"
#include "tests/support/fixture.h"

#include <random>

namespace {

class HashForm : public QrvTest {
  protected:
    cAttrHash hash{nullptr};

    cHashForm form() const { return cAttrHashProbe::form(hash); }
    void fill(int count, std::string const &prefix = "key") {
        for (int i = 0; i < count; ++i) hash.mapitem(prefix + std::to_string(i), cat::of(i));
    }
    void append(int count) {
        for (int i = 0; i < count; ++i) hash.vect_append(cat::of(i));
    }
    void TearDown() override { EXPECT_EQ(hash.broken_rule(true), ""); }
};

// Two hashes that get the same operations; one has its table from the start.
class cTwins {
  public:
    cTwins() { cAttrHashProbe::tabled(tabled_); }
    template <class Operation> void both(Operation operation) {
        operation(tabled_);
        operation(other_);
    }
    // Every key in the same slot, the same tombstones, the same ring.
    void expect_same_table() {
        ASSERT_EQ(other_.slots(), tabled_.slots());
        ASSERT_EQ(ring(other_), ring(tabled_));
        ASSERT_EQ(cAttrHashProbe::unused(other_), cAttrHashProbe::unused(tabled_));
        cAttrNode *b = other_.first();
        for (cAttrNode *a = tabled_.first(); a; a = tabled_.next(a), b = other_.next(b))
            ASSERT_EQ(cAttrHashProbe::slot_(a), cAttrHashProbe::slot_(b)) << short_text(a->key());
        for (std::uint32_t i = 0; i < tabled_.slots(); ++i)
            ASSERT_EQ(cAttrHashProbe::word(tabled_, i) == 1, cAttrHashProbe::word(other_, i) == 1);
        EXPECT_EQ(other_.broken_rule(true), "");
    }
    cAttrHash &other() { return other_; }

  private:
    cAttrHash tabled_{nullptr};
    cAttrHash other_{nullptr};
};

struct cRandom {
    explicit cRandom(unsigned int seed) : engine(seed) {}
    unsigned int operator()() { return static_cast<unsigned int>(engine()); }
    std::mt19937 engine;
};

objref key_of(unsigned int number) {
    if (number % 3 == 0) return cat::of(static_cast<int>(number / 3));
    return cat::of((number % 3 == 1 ? "k" : "another key ") + std::to_string(number));
}

} // namespace

TEST_F(HashForm, eight_keys_need_no_memory_and_the_ninth_creates_an_index) {
    EXPECT_EQ(form(), cHashForm::few);
    fill(8);
    EXPECT_EQ(form(), cHashForm::few);
    EXPECT_NE(hash.find("key7"), nullptr);
    EXPECT_EQ(hash.find("key8"), nullptr);
    fill(9);
    EXPECT_EQ(form(), cHashForm::index);
    EXPECT_NE(hash.find("key0"), nullptr);
    EXPECT_NE(hash.find("key8"), nullptr);
    EXPECT_EQ(hash.find("key9"), nullptr);
}

TEST_F(HashForm, the_ninth_key_of_a_vector_creates_a_row) {
    append(8);
    EXPECT_EQ(form(), cHashForm::few);
    append(200);
    EXPECT_EQ(form(), cHashForm::row);
    for (int i = 0; i < 208; ++i) EXPECT_EQ(hash.find(i), hash.findpos(static_cast<unsigned>(i)));
    EXPECT_EQ(hash.find(208), nullptr);
    EXPECT_EQ(hash.find(-1), nullptr);
    EXPECT_EQ(hash.find("0"), nullptr);
    EXPECT_EQ(hash.slots(), 397u);
}

TEST_F(HashForm, a_row_ends_with_a_key_that_is_not_the_next_int) {
    append(20);
    hash.mapitem(cat::of(30), cat::of(1));
    EXPECT_EQ(form(), cHashForm::index);
    for (int i = 0; i < 20; ++i) EXPECT_NE(hash.find(i), nullptr);
    EXPECT_NE(hash.find(30), nullptr);
    EXPECT_EQ(hash.find(20), nullptr);
}

TEST_F(HashForm, a_key_of_another_type_creates_the_table_at_once) {
    cHostileType const hostile;
    fill(3);
    hash.mapitem(hostile.key(1), cat::of(1));
    EXPECT_EQ(form(), cHashForm::table);
    EXPECT_EQ(cHostileType::hash_calls, 1);
    EXPECT_EQ(cHostileType::heq_calls, 0);
    EXPECT_NE(hash.find("key2"), nullptr);
    EXPECT_NE(hash.find(hostile.key(1)), nullptr);
    hash.clear(); // before the type is destroyed
}

TEST_F(HashForm, a_floating_key_creates_the_table) {
    append(20);
    hash.mapitem(cat::of(0.5), cat::of(1));
    EXPECT_EQ(form(), cHashForm::table);
    EXPECT_NE(hash.find(19), nullptr);
}

TEST_F(HashForm, searching_a_key_of_another_type_creates_no_table) {
    cHostileType const hostile;
    fill(20);
    EXPECT_EQ(hash.find(hostile.key(1)), nullptr);
    EXPECT_EQ(cHostileType::hash_calls, 1);
    EXPECT_EQ(hash.find(cat::of(0.5)), nullptr);
    EXPECT_EQ(form(), cHashForm::index);
}

TEST_F(HashForm, a_removal_creates_the_table) {
    for (int count : {1, 8, 9, 100}) {
        cAttrHash map(nullptr);
        for (int i = 0; i < count; ++i) map.mapitem("key" + std::to_string(i), cat::nil());
        map.delitem("key0");
        EXPECT_EQ(cAttrHashProbe::form(map), cHashForm::table);
        EXPECT_EQ(map.used(), static_cast<unsigned>(count - 1));
        EXPECT_EQ(map.find("key0"), nullptr);
        EXPECT_EQ(map.find("key1") != nullptr, count > 1);
        EXPECT_EQ(map.broken_rule(true), "");
    }
}

TEST_F(HashForm, a_few_colliding_strings_are_distinguished) {
    std::string const texts[] = {colliding_text(1), colliding_text(2), std::string("a\0x", 3),
                                 std::string("a\0y", 3), "a"};
    for (std::string const &text : texts) hash.mapitem(text, cat::of(text));
    EXPECT_EQ(hash.used(), 5u);
    for (std::string const &text : texts) EXPECT_EQ(val<std::string>(hash.getitem(text)), text);
}

TEST_F(HashForm, a_key_can_be_removed_if_strings_have_a_seeded_hash) {
    for (unsigned i = 0; i < 300; ++i) hash.mapitem(colliding_text(i), cat::of(1));
    EXPECT_TRUE(hash.delitem(colliding_text(7)));
    EXPECT_EQ(hash.find(colliding_text(7)), nullptr);
    for (unsigned i = 8; i < 300; ++i) ASSERT_NE(hash.find(colliding_text(i)), nullptr) << i;
}

TEST_F(HashForm, a_string_can_be_removed_from_many_ints) {
    append(20'000); // some probe of its table is long
    hash.mapitem("x", cat::of(1));
    EXPECT_TRUE(hash.delitem("x"));
    EXPECT_TRUE(hash.is_vector());
    EXPECT_EQ(hash.find(19'999), hash.last());
}

TEST_F(HashForm, ints_chosen_to_collide_in_an_index_cost_little_more_than_others) {
    // The upper bits that choose the first word are the same.
    std::vector<int> chosen;
    for (std::uint64_t i = 0; chosen.size() < 3000; ++i)
        if ((i * 0x9E3779B97F4A7C15u) >> 52 == 5) chosen.push_back(static_cast<int>(i));
    std::uint64_t const before = cAttrHash::probe_count();
    for (int key : chosen) hash.mapitem(cat::of(key), cat::nil());
    for (int key : chosen) ASSERT_NE(hash.find(key), nullptr);
    EXPECT_EQ(form(), cHashForm::index);
    EXPECT_LT(cAttrHash::probe_count() - before, 100u * chosen.size());
}

TEST_F(HashForm, strings_chosen_to_collide_are_found_in_their_table) {
    cTwins twins;
    for (unsigned int i = 0; i < 300; ++i) {
        std::string const text = colliding_text(i);
        twins.both([&](cAttrHash &map) { map.mapitem(text, cat::nil()); });
        EXPECT_NE(twins.other().find(text), nullptr);
    }
    EXPECT_EQ(twins.other().used(), 300u);
    EXPECT_EQ(twins.other().broken_rule(true), "");
}

TEST_F(HashForm, floating_keys_are_found_after_an_index_was_seeded) {
    for (unsigned int i = 0; i < 1000; ++i) hash.mapitem(colliding_text(i), cat::nil());
    EXPECT_EQ(form(), cHashForm::index);
    EXPECT_TRUE(cAttrHashProbe::seeded(hash));
    hash.mapitem(cat::of(0.5), cat::of(1));
    hash.mapitem(cat::of(1.5f), cat::of(2));
    EXPECT_NE(hash.find(cat::of(0.5)), nullptr);
    EXPECT_NE(hash.find(cat::of(1.5f)), nullptr);
    EXPECT_EQ(hash.find(cat::of(2.5)), nullptr);
}

TEST_F(HashForm, a_table_created_late_equals_one_created_at_the_start) {
    for (unsigned int seed = 0; seed < 60; ++seed) {
        cRandom random(seed);
        cTwins twins;
        unsigned int const inserts = random() % 250, range = 1 + random() % 400;
        for (unsigned int i = 0; i < inserts; ++i) {
            objref const key = key_of(random() % range);
            twins.both([&](cAttrHash &map) { map.mapitem(key, cat::of(1)); });
            if (seed % 4 == 1 && random() % 8 == 0) // moves don't change the table
                twins.both([&](cAttrHash &map) { map.insert(key, cat::of(2), map.first()); });
        }
        objref const last = seed % 2 ? key_of(random() % range) : cat::of(0.5);
        twins.both([&](cAttrHash &map) {
            seed % 2 ? (void)map.delitem(last) : (void)map.mapitem(last, cat::nil());
        });
        if (seed % 3 == 0) twins.both([](cAttrHash &map) { map.clear(); });
        twins.expect_same_table();
    }
}

TEST_F(HashForm, rings_sizes_and_hook_calls_equal_those_of_a_table) {
    cHostileType const hostile;
    for (unsigned int seed = 0; seed < 60; ++seed) {
        cRandom random(seed);
        cTwins twins;
        int calls[2] = {};
        for (int i = 0; i < 300; ++i) {
            unsigned int const what = random() % 100, number = random() % 120;
            objref const key = what < 5 && seed % 2 && i > 100
                                   ? hostile.key(static_cast<int>(number % 7))
                                   : key_of(number);
            int *count = calls;
            twins.both([&](cAttrHash &map) {
                cHostileType::reset();
                if (what < 70)
                    map.mapitem(key, cat::of(i));
                else if (what < 80)
                    (void)map.find(key);
                else if (what < 84 && i > 150)
                    map.delitem(key);
                else if (what < 88)
                    map.vect_append(cat::of(i));
                else if (what < 90 && i > 200)
                    map.vect_erase(static_cast<int>(number));
                else if (what < 92)
                    map.rename(key, key_of(number + 1));
                *count++ = 1000 * cHostileType::hash_calls + cHostileType::heq_calls;
            });
            ASSERT_EQ(calls[0], calls[1]);
        }
        twins.expect_same_table();
    }
}

// --- destroying

TEST_F(HashForm, a_destructor_finds_the_hash_without_this_entry_and_those_before_it) {
    std::string seen;
    auto *const map = new cAttrHash(nullptr);
    for (int i = 0; i < 5; ++i) map->mapitem("a" + std::to_string(i), cat::of(i));
    map->mapitem("will", on_destroy([&] {
                     seen = ring(*map) + std::to_string(map->used()) +
                            (map->find("a4") ? " a4" : "") + (map->find("b3") ? " b3" : "") +
                            (map->broken_rule(true).empty() ? " sound" : "");
                 }));
    for (int i = 0; i < 50; ++i) map->mapitem("b" + std::to_string(i), cat::of(i));
    std::string ring_then;
    for (int i = 0; i < 50; ++i)
        ring_then += "b" + std::to_string(i) + "=" + std::to_string(i) + " ";
    delete map;
    EXPECT_EQ(seen, ring_then + "50 b3 sound");
}

TEST_F(HashForm, a_destructor_in_an_inner_hash_finds_the_outer_hash_in_order) {
    std::string seen;
    objref outer = make<cMapObj>();
    cAttrHash &hash_of_outer = static_cast<cMapObj &>(*outer).datamap();
    hash_of_outer.mapitem("first", cat::of(1));
    objref inner = make<cMapObj>();
    static_cast<cMapObj &>(*inner).datamap().mapitem("x", cat::of(1));
    static_cast<cMapObj &>(*inner).datamap().mapitem("will", on_destroy([&] {
                                                         seen =
                                                             ring(hash_of_outer) +
                                                             std::to_string(hash_of_outer.used()) +
                                                             hash_of_outer.broken_rule(true);
                                                         hash_of_outer.mapitem("late", cat::of(9));
                                                         hash_of_outer.delitem("last");
                                                     }));
    hash_of_outer.mapitem("inner", inner);
    inner = nullptr;
    hash_of_outer.mapitem("last", cat::of(2));
    outer = nullptr;
    EXPECT_EQ(seen, "last=2 1");
}

TEST_F(HashForm, a_hash_that_is_destroyed_returns_its_greatest_key_until_its_removal) {
    static int assigned;
    assigned = 0;
    cProcedure2 const count = [](cObj &, objref &) { return ++assigned > 0; };
    objref const before = cat::type_int().tmember("assign");
    int next = 0;
    auto *const map = new cAttrHash(nullptr);
    map->mapitem(own_key(7), on_destroy([&] { next = map->after_last_index(); }));
    for (int key : {9, 3}) map->mapitem(own_key(key), cat::of(key));
    cat::type_int().set_tmember("assign", make<cExeMember>(count));
    delete map;
    cat::type_int().set_tmember("assign", before);
    EXPECT_EQ(next, 10);
    EXPECT_EQ(assigned, 0); // keys are compared only after the removal of the greatest
}

TEST_F(HashForm, entries_stored_while_a_hash_is_destroyed_are_released_too) {
    objref const kept = cat::of(7);
    auto *const map = new cAttrHash(nullptr);
    map->mapitem("will", on_destroy([&] {
                     for (int i = 0; i < 100; ++i) map->mapitem("late" + std::to_string(i), kept);
                 }));
    delete map;
    EXPECT_EQ(kept->refs(), 1u);
}

TEST_F(HashForm, a_held_node_of_a_destroyed_hash_is_dead) {
    auto *const map = new cAttrHash(nullptr);
    map->mapitem("a", cat::of(1));
    cAttrNode *const node = map->first();
    node->hold();
    delete map;
    EXPECT_TRUE(node->is_dead());
    EXPECT_TRUE(node->is_detached());
    EXPECT_EQ(node->map(), nullptr);
    EXPECT_EQ(node->key(), nullptr);
    node->unhold();
}

TEST_F(HashForm, members_with_destructors_are_released_in_order) {
    std::string seen;
    auto *const map = new cAttrHash(nullptr);
    for (char const *key : {"a", "b", "c"}) {
        objref const value = cat::of(1);
        value->set_omember("w", on_destroy([&seen, map, key] { seen += key + ring(*map) + ";"; }));
        map->mapitem(key, value);
    }
    delete map;
    EXPECT_EQ(seen, "ab=1 c=1 ;bc=1 ;c;");
}

// Reads of a vector's values by index: each returns the value of the node that find() returns.
#include "tests/core/hash_support.h"
#include "tests/support/fixture.h"
#include "tests/support/sanitized.h"

#include "qrv/containers/cmapobj.h"
#include "qrv/containers/cvectorobj.h"

#include <random>

namespace {

constexpr int many = 40; // a vector of this size has a row, into which reads copy the values

class HashRow : public QrvTest {
  protected:
    cAttrHash hash{nullptr};

    void fill(int n) {
        for (int i = 0; i < n; ++i) ASSERT_TRUE(hash.vect_append(cat::of(100 + i)));
    }
    // Reads the value at each index, and at one beyond each end.
    void read() const {
        for (int i = -1; i <= static_cast<int>(hash.used()); ++i) {
            cAttrNode const *const node = hash.find(i);
            ASSERT_EQ(hash.valueof(i), node ? node->valref().get() : nullptr) << i;
        }
    }
    void read_often() const {
        for (int times = 0; times < 3; ++times) read();
        ASSERT_EQ(hash.broken_rule(true), "");
    }
    void make_values() {
        fill(many);
        read_often();
        ASSERT_TRUE(cAttrHashProbe::has_values(hash));
    }
};

} // namespace

TEST_F(HashRow, the_row_has_values_after_more_reads_than_a_quarter_of_its_entries) {
    fill(many);
    for (int i = 0; i < many / 4; ++i) EXPECT_TRUE(hash.valueof(i));
    EXPECT_FALSE(cAttrHashProbe::has_values(hash));
    EXPECT_TRUE(hash.valueof(0));
    EXPECT_TRUE(cAttrHashProbe::has_values(hash));
    read_often();
}

TEST_F(HashRow, the_row_has_appended_and_replaced_values) {
    make_values();
    fill(3 * many);
    read();
    EXPECT_TRUE(cAttrHashProbe::has_values(hash));
    hash.setitem(cat::of(5), cat::of("other"));
    hash.mapitem(cat::of(6), cat::of("other"));
    *hash.find(7) = cat::of("other");
    hash.insert(cat::of(8), objref(), nullptr);
    read_often();
    EXPECT_EQ(short_text(objref::share(hash.valueof(5))), "other");
    EXPECT_FALSE(hash.valueof(8));
}

TEST_F(HashRow, the_row_has_values_stored_through_a_reference) {
    make_values();
    objref &value = hash.find(5)->valref_();
    value = cat::of("other");
    read_often();
    value = nullptr;
    read_often();
    hash.setitem(cat::of(5), cat::of("third"));
    value = cat::of("fourth");
    read_often();
}

TEST_F(HashRow, the_row_has_detached_values) {
    make_values();
    objref const shared = hash.find(5)->valref();
    EXPECT_TRUE(cat::detach(hash.find(5)->valref(), false));
    EXPECT_NE(hash.valueof(5), shared.get());
    read_often();
    objref const other = hash.find(6)->valref();
    EXPECT_TRUE(hash.find(6)->detach());
    EXPECT_NE(hash.valueof(6), other.get());
    read_often();
}

TEST_F(HashRow, a_read_while_an_old_value_is_destroyed_finds_the_new_one) {
    make_values();
    cObj *seen = nullptr;
    hash.setitem(cat::of(5), on_destroy([&] { seen = hash.valueof(5); }));
    objref const value = cat::of("new");
    hash.setitem(cat::of(5), value);
    EXPECT_EQ(seen, value.get());
}

TEST_F(HashRow, a_read_while_the_hash_is_destroyed_finds_the_remaining_values) {
    std::string seen;
    {
        auto const freed = make<cAttrHash>(nullptr);
        for (int i = 0; i < many; ++i)
            freed->vect_append(i == 20 ? on_destroy([&, h = freed.get()] {
                seen = std::to_string(h->valueof(19) != nullptr) +
                       std::to_string(h->valueof(20) != nullptr) +
                       short_text(objref::share(h->valueof(21)));
            })
                                       : cat::of(i));
        for (int i = 0; i < many; ++i) EXPECT_TRUE(freed->valueof(i));
        EXPECT_TRUE(cAttrHashProbe::has_values(*freed));
    }
    EXPECT_EQ(seen, "0021");
}

TEST_F(HashRow, a_hash_that_is_no_longer_a_row_has_no_row_values) {
    make_values();
    hash.delitem(cat::of(many - 1));
    read_often();
    EXPECT_FALSE(cAttrHashProbe::has_values(hash));
    cAttrHash other(nullptr);
    for (int i = 0; i < many; ++i) other.vect_append(cat::of(i));
    for (int i = 0; i < many; ++i) EXPECT_TRUE(other.valueof(i));
    other.mapitem("a", cat::of(1));
    EXPECT_FALSE(cAttrHashProbe::has_values(other));
    for (int i = 0; i < many; ++i) EXPECT_EQ(other.valueof(i), other.find(i)->valref().get());
}

TEST_F(HashRow, int_keys_of_a_map_are_found_by_valueof) {
    hash.mapitem("a", cat::of(1));
    hash.mapitem(cat::of(7), cat::of(2));
    EXPECT_EQ(hash.valueof(7), hash.find(7)->valref().get());
    EXPECT_FALSE(hash.valueof(0));
    read_often();
}

TEST_F(HashRow, values_agree_with_the_nodes_after_generated_changes) {
    std::mt19937 random(20);
    int const rounds = test::sanitized ? 40 : 200;
    for (int round = 0; round < rounds; ++round) {
        cAttrHash fresh(nullptr);
        auto const at = [&] { return static_cast<int>(random() % (fresh.used() + 1)); };
        std::vector<objref *> references;
        for (int step = 0; step < 150; ++step) {
            int const i = at();
            cAttrNode *const node = fresh.find(i);
            switch (random() % (round % 4 == 0 ? 9 : 7)) {
            case 0:
            case 1:
                fresh.vect_append(cat::of(step));
                break;
            case 2:
                fresh.setitem(cat::of(i), cat::of(step));
                break;
            case 3:
                if (node && random() % 4 == 0) references.push_back(&node->valref_());
                if (!references.empty()) *references[random() % references.size()] = cat::of(step);
                break;
            case 4:
            case 5: {
                objref const keep = node ? node->valref() : objref();
                if (node && step % 2 == 0) node->detach();
                if (node && step % 2 != 0) cat::detach(node->valref(), false);
                break;
            }
            case 6:
                fresh.vect_insert(i, cat::of(step));
                break;
            case 7:
                references.clear();
                fresh.vect_erase(i);
                break;
            default:
                fresh.mapitem(cat::of(at()), cat::of(step));
            }
            for (int j = -1; j <= static_cast<int>(fresh.used()); ++j) {
                cAttrNode const *const now = fresh.find(j);
                ASSERT_EQ(fresh.valueof(j), now ? now->valref().get() : nullptr) << round;
            }
            ASSERT_EQ(fresh.broken_rule(false), "");
        }
    }
}

TEST_F(HashRow, the_rules_detect_a_wrong_row_value) {
    make_values();
    cAttrHashProbe::known_value(hash, 5) = 8;
    EXPECT_EQ(hash.broken_rule(false), "H11");
    cAttrHashProbe::known_value(hash, 5) = 0;
    EXPECT_EQ(hash.broken_rule(false), "H11");
    hash.setitem(cat::of(5), cat::of(1));
    EXPECT_EQ(hash.broken_rule(false), "");
}

TEST_F(HashRow, appending_uses_as_many_object_ids_as_storing_under_a_key) {
    cAttrHash by_key(nullptr);
    for (int i = 0; i < many; ++i) {
        objref const value = cat::of(i);
        std::uint32_t const id = cObj::ob_lstid(), count = cObj::ob_count();
        EXPECT_TRUE(hash.vect_append(value));
        std::uint32_t const ids = cObj::ob_lstid() - id, counted = cObj::ob_count() - count;
        EXPECT_TRUE(by_key.mapitem(cat::of(i), value));
        EXPECT_EQ(cObj::ob_lstid() - id, 2 * ids);
        EXPECT_EQ(cObj::ob_count() - count, 2 * counted);
    }
    EXPECT_EQ(ring(hash), ring(by_key));
    for (int i = 0; i + 1 < many; ++i)
        EXPECT_LT(hash.find(i)->key()->obid(), hash.find(i + 1)->key()->obid());
    EXPECT_EQ(hash.slots(), by_key.slots());
}

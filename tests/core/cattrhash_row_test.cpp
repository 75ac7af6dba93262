// Looks at the values of a vector by their index. The node of the index is the reference.
#include "tests/core/hash_support.h"
#include "tests/support/fixture.h"
#include "tests/support/sanitized.h"

#include "qrv/containers/cmapobj.h"
#include "qrv/containers/cvectorobj.h"

#include <random>

namespace {

constexpr int many = 40; // a row, and looks enough that it has values

class HashRow : public QrvTest {
  protected:
    cAttrHash hash{nullptr};

    void fill(int n) {
        for (int i = 0; i < n; ++i) ASSERT_TRUE(hash.vect_append(cat::of(100 + i)));
    }
    // Looks at each index and one beyond each end.
    void look() const {
        for (int i = -1; i <= static_cast<int>(hash.used()); ++i) {
            cAttrNode const *const node = hash.find(i);
            ASSERT_EQ(hash.valueof(i), node ? node->valref().get() : nullptr) << i;
        }
    }
    void look_often() const {
        for (int times = 0; times < 3; ++times) look();
        ASSERT_EQ(hash.broken_rule(true), "");
    }
    void make_values() {
        fill(many);
        look_often();
        ASSERT_TRUE(cAttrHashProbe::has_values(hash));
    }
};

} // namespace

TEST_F(HashRow, the_row_stores_values_after_a_quarter_as_many_reads) {
    fill(many);
    for (int i = 0; i < many / 4; ++i) EXPECT_TRUE(hash.valueof(i));
    EXPECT_FALSE(cAttrHashProbe::has_values(hash));
    EXPECT_TRUE(hash.valueof(0));
    EXPECT_TRUE(cAttrHashProbe::has_values(hash));
    look_often();
}

TEST_F(HashRow, the_row_has_appended_and_replaced_values) {
    make_values();
    fill(3 * many);
    look();
    EXPECT_TRUE(cAttrHashProbe::has_values(hash));
    hash.setitem(cat::of(5), cat::of("other"));
    hash.mapitem(cat::of(6), cat::of("other"));
    *hash.find(7) = cat::of("other");
    hash.insert(cat::of(8), objref(), nullptr);
    look_often();
    EXPECT_EQ(short_text(objref::share(hash.valueof(5))), "other");
    EXPECT_FALSE(hash.valueof(8));
}

TEST_F(HashRow, the_row_has_values_stored_through_a_reference) {
    make_values();
    objref &value = hash.find(5)->valref_();
    value = cat::of("other");
    look_often();
    value = nullptr;
    look_often();
    hash.setitem(cat::of(5), cat::of("third"));
    value = cat::of("fourth");
    look_often();
}

TEST_F(HashRow, the_row_has_detached_values) {
    make_values();
    objref const shared = hash.find(5)->valref();
    EXPECT_TRUE(cat::detach(hash.find(5)->valref(), false));
    EXPECT_NE(hash.valueof(5), shared.get());
    look_often();
    objref const other = hash.find(6)->valref();
    EXPECT_TRUE(hash.find(6)->detach());
    EXPECT_NE(hash.valueof(6), other.get());
    look_often();
}

TEST_F(HashRow, a_read_while_an_old_value_is_destroyed_finds_the_new_one) {
    make_values();
    cObj *seen = nullptr;
    hash.setitem(cat::of(5), last_will([&] { seen = hash.valueof(5); }));
    objref const value = cat::of("new");
    hash.setitem(cat::of(5), value);
    EXPECT_EQ(seen, value.get());
}

TEST_F(HashRow, a_read_while_the_hash_is_destroyed_finds_the_remaining_values) {
    std::string seen;
    {
        auto const dying = make<cAttrHash>(nullptr);
        for (int i = 0; i < many; ++i)
            dying->vect_append(i == 20 ? last_will([&, h = dying.get()] {
                seen = std::to_string(h->valueof(19) != nullptr) +
                       std::to_string(h->valueof(20) != nullptr) +
                       short_text(objref::share(h->valueof(21)));
            })
                                       : cat::of(i));
        for (int i = 0; i < many; ++i) EXPECT_TRUE(dying->valueof(i));
        EXPECT_TRUE(cAttrHashProbe::has_values(*dying));
    }
    EXPECT_EQ(seen, "0021");
}

TEST_F(HashRow, a_hash_that_is_no_longer_a_row_has_no_row_values) {
    make_values();
    hash.delitem(cat::of(many - 1));
    look_often();
    EXPECT_FALSE(cAttrHashProbe::has_values(hash));
    cAttrHash other(nullptr);
    for (int i = 0; i < many; ++i) other.vect_append(cat::of(i));
    for (int i = 0; i < many; ++i) EXPECT_TRUE(other.valueof(i));
    other.mapitem("a", cat::of(1));
    EXPECT_FALSE(cAttrHashProbe::has_values(other));
    for (int i = 0; i < many; ++i) EXPECT_EQ(other.valueof(i), other.find(i)->valref().get());
}

TEST_F(HashRow, keys_of_a_map_are_found_by_number) {
    hash.mapitem("a", cat::of(1));
    hash.mapitem(cat::of(7), cat::of(2));
    EXPECT_EQ(hash.valueof(7), hash.find(7)->valref().get());
    EXPECT_FALSE(hash.valueof(0));
    look_often();
}

TEST_F(HashRow, values_agree_with_the_nodes_after_generated_changes) {
    std::mt19937 random(20);
    int const rounds = test::sanitized ? 40 : 200;
    for (int round = 0; round < rounds; ++round) {
        cAttrHash fresh(nullptr);
        auto const at = [&] { return static_cast<int>(random() % (fresh.used() + 1)); };
        std::vector<objref *> given_out;
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
                if (node && random() % 4 == 0) given_out.push_back(&node->valref_());
                if (!given_out.empty()) *given_out[random() % given_out.size()] = cat::of(step);
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
                given_out.clear();
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

TEST_F(HashRow, appending_assigns_the_same_ids_and_counts_as_storing_under_a_key) {
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

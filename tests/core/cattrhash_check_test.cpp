// The rule checker of the attribute hash: it must report each rule when the test breaks it.
#include "qrv/core/cattrhash.h"

#include "tests/core/hash_support.h"
#include "tests/support/fixture.h"

namespace {

class HashRules : public QrvTest {
  protected:
    cAttrHash hash{nullptr};

    HashRules() {
        for (char const *key : {"a", "b", "c"}) hash.mapitem(key, cat::of(1));
        hash.mapitem(cat::of(4), cat::of(1));
    }
    // Sets a field, stores the checker's result, and restores the field.
    template <class T> std::string with(T &field, T wrong, bool deep = false) {
        T const right = std::exchange(field, std::move(wrong));
        std::string const verdict = hash.broken_rule(deep);
        field = right;
        return verdict;
    }
    cSlotWord &any_word(cSlotWord value) {
        for (std::uint32_t i = 0;; ++i)
            if (cSlotWord &word = cAttrHashProbe::word(hash, i); word == value) return word;
    }
    void TearDown() override { EXPECT_EQ(hash.broken_rule(true), ""); }
};

} // namespace

TEST_F(HashRules, hold_for_an_ordinary_table) {
    EXPECT_EQ(hash.broken_rule(false), "");
    EXPECT_EQ(hash.broken_rule(true), "");
}

TEST_F(HashRules, h1_counts_of_nodes_agree) {
    EXPECT_EQ(with(cAttrHashProbe::used(hash), 3u), "H1");
    EXPECT_EQ(with(cAttrHashProbe::used(hash), 5u), "H1");
    EXPECT_EQ(with(any_word(1 - 1), reinterpret_cast<cSlotWord>(hash.first())), "H1");
}

TEST_F(HashRules, h1_the_ring_is_linked_both_ways) {
    cAttrHashProbe::swap_links(hash.find("b"));
    EXPECT_EQ(hash.broken_rule(false), "H1");
    cAttrHashProbe::swap_links(hash.find("b"));
}

TEST_F(HashRules, h2_nodes_and_slots_point_to_each_other) {
    cAttrNode *const b = hash.find("b");
    EXPECT_EQ(with(cAttrHashProbe::table(b), static_cast<cAttrHash *>(nullptr)), "H2 key=b");
    EXPECT_EQ(with(cAttrHashProbe::slot_(b), cAttrHashProbe::slot_(hash.find("a"))), "H2 key=b");
    EXPECT_EQ(with(cAttrHashProbe::slot_(b), hash.slots()), "H2 key=b");
    EXPECT_EQ(with(cAttrHashProbe::dead(b), true), "H2 key=b");
    EXPECT_EQ(with(*cAttrHashProbe::slot(b), cSlotWord{1}), "H2 key=b");
}

TEST_F(HashRules, h3_no_two_keys_are_equal) {
    cAttrNode *const b = hash.find("b");
    objref const twin = cat::of("a");
    EXPECT_EQ(with(cAttrHashProbe::key(b), twin), "");
    EXPECT_EQ(with(cAttrHashProbe::key(b), twin, true), "H3 key=a");
}

TEST_F(HashRules, h4_no_nil_key) {
    cAttrNode *const b = hash.find("b");
    EXPECT_EQ(with(cAttrHashProbe::key(b), objref()), "H4");
    EXPECT_EQ(with(cAttrHashProbe::key(b), cat::nil()), "H4");
}

TEST_F(HashRules, h5_the_table_is_not_too_full) {
    for (std::uint32_t i = 0; i < 97; ++i)
        if (cSlotWord &word = cAttrHashProbe::word(hash, i); word == 0) word = 1;
    std::uint32_t const unused = std::exchange(cAttrHashProbe::unused(hash), 0);
    EXPECT_EQ(hash.broken_rule(false), "H5");
    for (std::uint32_t i = 0; i < 97; ++i)
        if (cSlotWord &word = cAttrHashProbe::word(hash, i); word == 1) word = 0;
    cAttrHashProbe::unused(hash) = unused;
}

TEST_F(HashRules, h6_never_used_slots_are_counted) {
    EXPECT_EQ(with(cAttrHashProbe::unused(hash), 92u), "H6");
    EXPECT_EQ(with(any_word(0), cSlotWord{1}), "H6");
}

TEST_F(HashRules, h7_what_is_known_about_keys_is_right) {
    EXPECT_EQ(with(cAttrHashProbe::others(hash), 1u), "H7");
    EXPECT_EQ(with(cAttrHashProbe::no_ints(hash), 2u), "H7");
    EXPECT_EQ(with(cAttrHashProbe::greatest(hash), 5), "H7");
    EXPECT_EQ(with(cAttrHashProbe::is_vector(hash), true), "H7");
}

TEST_F(HashRules, h8_each_key_is_found_under_its_hash) {
    cAttrNode *const b = hash.find("b");
    EXPECT_EQ(with(cAttrHashProbe::hash_(b), cAttrHashProbe::hash_of(b) + 1), "");
    EXPECT_EQ(with(cAttrHashProbe::hash_(b), cAttrHashProbe::hash_of(b) + 1, true), "H8 key=b");
}

TEST_F(HashRules, h9_the_ring_is_in_creation_order_until_a_node_is_moved) {
    EXPECT_TRUE(hash.in_creation_order());
    hash.insert(cat::of("c"), cat::of(1), hash.find("a"));
    EXPECT_FALSE(hash.in_creation_order());
    EXPECT_EQ(with(cAttrHashProbe::moved(hash), false), "H9 key=a");
    hash.clear();
    EXPECT_TRUE(hash.in_creation_order());
    hash.mapitem("x", cat::of(1));
    hash.mapitem("y", cat::of(1));
    hash.rename(cat::of("x"), cat::of("z"));
    EXPECT_FALSE(hash.in_creation_order());
}

// Keys without an object: the late creation of the object must be invisible.

#include "tests/core/hash_support.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>

namespace {

cAttrNode const *only_node(cAttrHash const &hash) { return hash.first(); }

bool has_object(cAttrHash const &hash) { return only_node(hash)->has_key_object(); }

TEST(NodeKey, a_string_key_has_no_object_until_it_is_requested) {
    cAttrHash hash(nullptr);
    hash.mapitem(std::string("name"), cat::of(1));
    EXPECT_TRUE(hash.find("name"));
    EXPECT_TRUE(hash.find(std::string("name")));
    EXPECT_TRUE(hash.find(cat::of("name")));
    EXPECT_FALSE(hash.find("nam"));
    EXPECT_FALSE(has_object(hash));
    EXPECT_EQ(short_text(only_node(hash)->key()), "name");
    EXPECT_TRUE(has_object(hash));
    EXPECT_TRUE(hash.find("name"));
}

TEST(NodeKey, an_int_key_has_no_object_until_it_is_requested) {
    cAttrHash hash(nullptr);
    hash.vect_append(cat::of("value"));
    EXPECT_EQ(only_node(hash)->key_as_index(), 0);
    EXPECT_EQ(hash.after_last_index(), 1);
    EXPECT_FALSE(has_object(hash));
    EXPECT_EQ(val<int>(only_node(hash)->key()), 0);
    EXPECT_TRUE(has_object(hash));
    EXPECT_EQ(only_node(hash)->key_as_index(), 0);
}

TEST(NodeKey, its_value_is_known_with_and_without_an_object) {
    cAttrHash hash(nullptr);
    hash.mapitem(std::string("name"), cat::of(1));
    hash.mapitem(cat::of(7), cat::of(1));
    cAttrNode const &text = *hash.first(), &number = *hash.last();
    for (bool const made : {false, true}) {
        EXPECT_EQ(text.key_string(), "name");
        EXPECT_EQ(text.key_int(), std::nullopt);
        EXPECT_EQ(number.key_int(), 7);
        EXPECT_EQ(number.key_string(), std::nullopt);
        EXPECT_EQ(text.has_key_object(), made);
        EXPECT_EQ(number.has_key_object(), made);
        EXPECT_TRUE(text.key() && number.key());
    }
}

TEST(NodeKey, a_key_that_is_neither_a_string_nor_an_int_has_no_plain_value) {
    cAttrHash hash(nullptr);
    hash.mapitem(cat::of(1.5), cat::of(1));
    cAttrNode const &node = *hash.first();
    EXPECT_TRUE(node.has_key_object());
    EXPECT_EQ(node.key_string(), std::nullopt);
    EXPECT_EQ(node.key_int(), std::nullopt);
}

TEST(NodeKey, strings_of_any_length_and_with_any_bytes_can_be_keys) {
    for (std::size_t length : {0u, 1u, 2u, 3u, 15u, 16u, 99u, 100u, 101u, 255u, 256u, 1000u}) {
        std::string text(length, 'x');
        if (length > 2) text[1] = '\0';
        cAttrHash hash(nullptr);
        hash.mapitem(text, cat::of(1));
        EXPECT_TRUE(hash.find(text)) << length;
        EXPECT_EQ(val<std::string>(only_node(hash)->key()), text);
        EXPECT_EQ(hash.broken_rule(true), "");
    }
}

TEST(NodeKey, its_hash_equals_the_hash_of_the_type_string) {
    for (std::size_t length = 0; length <= 40; ++length)
        for (std::size_t nul = 0; nul <= length; ++nul) {
            std::string text(length, ' ');
            for (std::size_t i = 0; i < length; ++i) text[i] = static_cast<char>(i * 73 + 130);
            if (nul < length) text[nul] = '\0';
            cAttrHash hash(nullptr);
            hash.mapitem(text, cat::of(1));
            EXPECT_EQ(cAttrHashProbe::hash_of(hash.first()), cat::hash_string(cat::of(text)));
        }
}

TEST(NodeKey, the_node_determines_its_id_and_its_census) {
    std::uint32_t const before = cObj::ob_count();
    {
        cAttrHash hash(nullptr);
        objref const value = cat::of(1);
        std::uint32_t const id = cObj::ob_lstid();
        hash.mapitem(std::string("a"), value);
        hash.mapitem(cat::of("b"), value);
        EXPECT_EQ(cObj::ob_lstid(), id + 4); // two of them are those of the objects passed in
        EXPECT_EQ(cObj::ob_count(), before + 3);
        EXPECT_EQ(hash.find("a")->key()->obid(), id + 2);
        EXPECT_EQ(hash.find("b")->key()->obid(), id + 4);
        EXPECT_EQ(cObj::ob_lstid(), id + 4);
        EXPECT_EQ(cObj::ob_count(), before + 3);
    }
    EXPECT_EQ(cObj::ob_count(), before);
}

// Reads the census in its destructor.
struct cCensus : cObj {
    explicit cCensus(std::uint32_t &count) : count_(count) {}
    cCensus(cCensus const &) = delete;
    cCensus &operator=(cCensus const &) = delete;
    ~cCensus() override { count_ = ob_count(); }
    std::uint32_t &count_;
};

TEST(NodeKey, a_key_leaves_the_census_after_the_value_is_destroyed) {
    std::uint32_t const before = cObj::ob_count();
    for (bool const made : {false, true}) {
        std::uint32_t removed = 0, cleared = 0;
        {
            cAttrHash hash(nullptr);
            hash.mapitem(std::string("a"), make<cCensus>(removed));
            hash.mapitem(std::string("b"), make<cCensus>(cleared));
            if (made) {
                EXPECT_TRUE(hash.first()->key() && hash.last()->key());
            }
            hash.delitem("a");
            EXPECT_EQ(removed, before + 4); // two values and two keys
        }
        EXPECT_EQ(cleared, before + 2);
        EXPECT_EQ(cObj::ob_count(), before);
    }
}

TEST(NodeKey, searches_use_a_changed_key_object) {
    cAttrHash hash(nullptr);
    hash.mapitem(std::string("a"), cat::of(1));
    val<std::string>(hash.find("a")->key()) = "b";
    EXPECT_FALSE(hash.find("a"));
    EXPECT_EQ(short_text(only_node(hash)->key()), "b");
}

TEST(NodeKey, a_held_node_that_was_removed_has_no_key) {
    cAttrHash hash(nullptr);
    hash.mapitem(std::string("a"), cat::of(1));
    cAttrNode const *const node = hash.find("a");
    node->hold();
    hash.delitem("a");
    EXPECT_EQ(node->key(), nullptr);
    EXPECT_EQ(node->key_string(), std::nullopt);
    node->unhold();
}

TEST(NodeKey, a_linked_node_may_be_deleted) {
    std::uint32_t const before = cObj::ob_count();
    cAttrHash hash(nullptr);
    hash.mapitem(std::string("some text"), cat::of(1));
    hash.mapitem(std::string("other"), cat::of(2));
    delete hash.find("some text");
    EXPECT_EQ(hash.used(), 1u);
    EXPECT_EQ(cObj::ob_count(), before + 2);
}

TEST(NodeKey, keys_survive_the_change_to_a_table_and_seeding) {
    cAttrHash hash(nullptr);
    for (int i = 0; i < 1000; ++i) hash.mapitem("key" + std::to_string(i), cat::of(i));
    hash.delitem("key500");
    EXPECT_EQ(hash.broken_rule(false), "");
    for (int i = 0; i < 1000; ++i)
        EXPECT_EQ(hash.find("key" + std::to_string(i)) != nullptr, i != 500);
    EXPECT_FALSE(has_object(hash));
    EXPECT_EQ(hash.broken_rule(true), "");
}

} // namespace

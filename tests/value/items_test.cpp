// Iterating over values.

#include "tests/value/value_support.h"

#include <algorithm>
#include <iterator>
#include <ranges>
#include <vector>

using namespace value_test;

namespace {

class Items : public Quiet {};

std::string walked(qrv::value const &v) {
    std::string text;
    for (auto const &[key, item] : v.items()) text += text_of(key) + "=" + text_of(item) + " ";
    return text;
}

} // namespace

static_assert(std::ranges::forward_range<qrv::item_range>);
static_assert(std::ranges::forward_range<qrv::value>);
static_assert(std::ranges::forward_range<qrv::value const>);
static_assert(std::forward_iterator<qrv::item_iterator>);
static_assert(std::forward_iterator<qrv::element_iterator>);
static_assert(std::forward_iterator<qrv::key_iterator>);
static_assert(std::ranges::forward_range<qrv::key_range>);
static_assert(std::ranges::forward_range<qrv::element_range>);
static_assert(std::ranges::sized_range<qrv::item_range>);
static_assert(std::ranges::borrowed_range<qrv::value>);
static_assert(std::ranges::borrowed_range<qrv::item_range>);
static_assert(std::ranges::borrowed_range<qrv::key_range>);
static_assert(std::ranges::borrowed_range<qrv::element_range>);

TEST_F(Items, are_keys_and_values_in_order) {
    EXPECT_EQ(walked(read("{b= 1; a= x; 3= [1]}")), "b=1 a=x 3=[1, ] ");
    EXPECT_EQ(walked(read("[5, 6]")), "0=5 1=6 ");
    EXPECT_EQ(walked(read("<5, 6>")), "0=5 1=6 ");
    EXPECT_EQ(walked(read("{}")), "");
    EXPECT_EQ(walked(qrv::value()), "");
}

TEST_F(Items, the_items_of_a_container_are_its_values) {
    std::vector<qrv::value> const values(read("{a= 1; b= 2}").begin(), qrv::element_iterator());
    EXPECT_EQ(values, (std::vector<qrv::value>{1, 2}));
    int sum = 0;
    for (qrv::value const item : read("[1, 2, 3]")) sum += item.get<int>();
    EXPECT_EQ(sum, 6);
}

TEST_F(Items, the_items_of_a_scalar_are_refused) {
    EXPECT_EQ(thrown<qrv::type_error>([] { qrv::value(5).begin(); }),
              "expected a container, but it is an int: 5");
    EXPECT_THROW(qrv::value("text").items().begin(), qrv::type_error);
}

TEST_F(Items, work_with_the_algorithms_of_ranges) {
    qrv::value const list = read("[4, 5, 6]");
    EXPECT_EQ(std::ranges::distance(list), 3);
    EXPECT_EQ(std::ranges::distance(list.items()), 3);
    EXPECT_EQ(*std::ranges::find_if(list, [](qrv::value const &v) { return v == 5; }), 5);
    EXPECT_TRUE(std::ranges::equal(list, std::vector{4, 5, 6}));
    EXPECT_EQ(list.items().size(), 3U);
}

TEST_F(Items, keys_and_values_are_separate_ranges) {
    qrv::value const map = read("{b= 1; a= x; 3= [1]}");
    EXPECT_TRUE(std::ranges::equal(map.keys(), std::vector<qrv::value>{"b", "a", 3}));
    EXPECT_TRUE(std::ranges::equal(map.values(), map));
    EXPECT_EQ(std::ranges::distance(map.keys()), 3);
    EXPECT_EQ(std::ranges::distance(map.values()), 3);
    EXPECT_TRUE(std::ranges::equal(read("[5, 6]").keys(), std::vector{0, 1}));
    EXPECT_TRUE(qrv::value().keys().empty());
    EXPECT_THROW(qrv::value(5).keys().begin(), qrv::type_error);
    qrv::value root;
    root["a"] = map;
    EXPECT_EQ(root["a"].keys().size(), 3U);
    EXPECT_EQ(*root["a"].values().begin(), 1);
}

TEST_F(Items, an_iterator_outlives_its_range) {
    auto const found = std::ranges::find(read("[4, 5, 6]"), 5);
    EXPECT_EQ(*found, 5);
    auto const key = std::ranges::find(read("{a= 1; b= 2}").keys(), "b");
    EXPECT_EQ(*key, "b");
}

#ifndef __clang__ // clang 14 can't compile views with this standard library
TEST_F(Items, views_of_temporaries_own_their_container) {
    std::string names;
    for (auto const &name :
         read("{a= 1; b= 2}").keys() |
             std::views::transform([](qrv::value const &key) { return key.get<std::string>(); }))
        names += name;
    EXPECT_EQ(names, "ab");
    auto two = read("[1, 2, 3]").values() | std::views::take(2);
    EXPECT_EQ(std::ranges::distance(two), 2);
}
#endif

TEST_F(Items, iterators_are_values) {
    qrv::value const list = read("[4, 5]");
    qrv::element_iterator it = list.begin();
    qrv::element_iterator const first = it++;
    EXPECT_EQ(*first, 4);
    EXPECT_EQ(*it, 5);
    EXPECT_NE(first, it);
    it = first;
    EXPECT_EQ(first, it);
    EXPECT_EQ(++it, ++list.begin());
    EXPECT_EQ(++it, list.end());
}

TEST_F(Items, own_their_container) {
    auto range = read("{a= {b= 1}}").items();
    EXPECT_EQ((*range.begin()).key, "a");
    qrv::item_iterator it = range.begin();
    range = read("{}").items();
    EXPECT_EQ((*it).value, read("{b= 1}"));
}

TEST_F(Items, survive_the_removal_of_the_current_entry) {
    qrv::value v = read("{a= 1; b= 2; c= 3; d= 4}");
    std::string seen;
    for (auto const &[key, item] : v.items()) {
        seen += key.get<std::string>();
        if (item != 3) v.erase(key);
    }
    EXPECT_EQ(seen, "abcd");
    EXPECT_EQ(v, read("{c= 3}"));
}

TEST_F(Items, reach_entries_that_are_added_during_iteration) {
    qrv::value v = read("{a= 1; b= 2}");
    std::string seen;
    for (auto const &[key, item] : v.items()) {
        seen += key.get<std::string>();
        if (item == 2) v["c"] = 3;
        if (item == 1) v.erase("a");
    }
    EXPECT_EQ(seen, "abc");
}

TEST_F(Items, survive_the_removal_of_the_current_value_of_a_vector) {
    for (char const *text : {"[2, 4, 6, 8]", "<2, 4, 6, 8>"}) {
        qrv::value v = read(text);
        int sum = 0;
        for (auto const &[key, item] : v.items()) {
            sum += item.get<int>();
            v.erase(key);
        }
        EXPECT_EQ(sum, 20);
        EXPECT_TRUE(v.empty());
    }
}

TEST_F(Items, visit_a_value_once_though_others_are_inserted_before_it) {
    qrv::value v = read("[1, 2]");
    int sum = 0;
    for (qrv::value const &item : v) {
        sum += item.get<int>();
        v.insert(0, 5);
    }
    EXPECT_EQ(sum, 3);
    EXPECT_EQ(v, read("[5, 5, 1, 2]"));
}

TEST_F(Items, end_where_the_current_entry_and_the_next_are_removed) {
    qrv::value v = read("{a= 1; b= 2; c= 3}");
    int count = 0;
    for (qrv::value const &item : v) {
        EXPECT_EQ(item, 1);
        v.clear();
        ++count;
    }
    EXPECT_EQ(count, 1);
}

TEST_F(Items, have_keys_that_other_containers_accept) {
    qrv::value copy;
    for (auto const &[key, item] : read("{\"a/b\"= 1; 3= 2}").items()) {
        copy[key] = item;
        EXPECT_TRUE(copy.contains(key));
        EXPECT_EQ(copy.at(key), item);
        EXPECT_EQ(copy.find(key), item);
    }
    EXPECT_EQ(copy, read("{\"a/b\"= 1; 3= 2}"));
    qrv::value doubles = read("{1.5= a}");
    for (auto const &[key, item] : doubles.items()) {
        EXPECT_EQ(doubles.at(key), "a");
        doubles.set(key, "b");
        EXPECT_THROW(doubles[key].get<int>(), qrv::type_error);
    }
    EXPECT_EQ(doubles, read("{1.5= b}"));
}

TEST_F(Items, an_empty_iterator_equals_one_at_the_begin_of_nil) {
    qrv::element_iterator it;
    EXPECT_EQ(it, qrv::value().begin());
}

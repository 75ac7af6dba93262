// Changing values.

#include "qrv/containers/cattspec.h"
#include "qrv/containers/cmapobj.h"
#include "qrv/containers/csignalobj.h"
#include "qrv/core/ceros.h"
#include "qrv/core/cobjd.h"
#include "qrv/core/ctypes.h"
#include "tests/support/sanitized.h"
#include "tests/value/value_support.h"

#include <limits>
#include <stdexcept>

using namespace value_test;

namespace {

class ValueWrite : public Quiet {
  protected:
    static void SetUpTestSuite() { cat::find_type("intf"); } // the type is created on first use
};

// A vector with `depth` levels of vectors below it.
qrv::value nested(int depth) {
    qrv::value v = read("[]");
    for (int i = 0; i < depth; ++i) {
        qrv::value outer = read("[]");
        outer.push_back(v);
        v = outer;
    }
    return v;
}

// Counts how often a value reports a change, and throws when it is asked to.
class cListener {
  public:
    explicit cListener(qrv::value const &v) : slot_(this, &cListener::heard) {
        v.object()->force_changed_signal().connect(slot_);
    }
    int count = 0;
    bool throws = false;

  private:
    void heard() {
        ++count;
        if (throws) throw std::runtime_error("from a slot");
    }
    cSlot<cListener> slot_;
};

} // namespace

TEST_F(ValueWrite, set_creates_missing_levels_as_maps) {
    qrv::value v;
    v.set("a/b/c", 1);
    EXPECT_EQ(v, read("{a= {b= {c= 1}}}"));
    v.set("a/b/d", "x");
    EXPECT_EQ(v.at("a/b").size(), 2U);
    v.set("n", nullptr);
    EXPECT_TRUE(v.at("n").is_nil());
    v.set("n/below", 2); // a nil level is missing
    EXPECT_EQ(v.at("n/below"), 2);
}

TEST_F(ValueWrite, set_replaces_the_object) {
    qrv::value v = read("{a= 1}");
    qrv::value const before = v.at("a");
    v.set("a", 2);
    EXPECT_EQ(before, 1);
    EXPECT_EQ(v.at("a"), 2);
}

TEST_F(ValueWrite, set_without_a_path_replaces_the_variable) {
    qrv::value v = read("{a= 1}");
    qrv::value const before = v;
    v.set("", 5);
    EXPECT_EQ(v, 5);
    EXPECT_EQ(before.at("a"), 1);
}

TEST_F(ValueWrite, set_uses_an_int_as_an_int_key_or_a_position) {
    qrv::value v = read("{}");
    v.set(3, "x");
    v.set("4", "y");
    EXPECT_EQ(v, read("{3= x; 4= y}"));
    v.set("\"5\"", "z");
    v.set("5", "w"); // sets the existing string key
    EXPECT_EQ(v.size(), 3U);
    EXPECT_EQ(v["5"], "w");
    qrv::value list = read("[1]");
    list.set(1, 2);
    list.set("2", 3);
    list.set(0, 0);
    EXPECT_EQ(text_of(list), "[0, 2, 3, ]");
}

TEST_F(ValueWrite, set_past_the_end_of_a_vector_is_refused) {
    qrv::value v = read("{list= [1]}");
    EXPECT_THROW(v.set("list/2", 5), qrv::path_error);
    EXPECT_THROW(v.set("list/x", 5), qrv::path_error);
    EXPECT_THROW(v.set("list/-1", 5), qrv::path_error);
    try {
        v.set("list/2", 5);
    } catch (qrv::path_error const &failure) {
        EXPECT_EQ(failure.path(), "list/2");
        EXPECT_NE(failure.code(), 0U);
    }
    EXPECT_EQ(v, read("{list= [1]}"));
}

TEST_F(ValueWrite, set_below_a_scalar_is_refused) {
    qrv::value v = read("{bus= {name= rack}}");
    EXPECT_EQ(thrown<qrv::type_error>([&] { v.set("bus/name/x", 1); }),
              "bus/name: expected a container, but it is a string: \"rack\"");
    EXPECT_EQ(thrown<qrv::type_error>([&] { v.set("bus/name/x/y", 1); }),
              "bus/name: expected a container, but it is a string: \"rack\"");
    qrv::value scalar = 5;
    EXPECT_EQ(thrown<qrv::type_error>([&] { scalar.set("x", 1); }),
              "expected a container, but it is an int: 5");
    EXPECT_EQ(scalar, 5);
}

TEST_F(ValueWrite, erase_answers_whether_something_was_there) {
    qrv::value v = read("{a= {b= 1; c= 2}; list= [1, 2, 3]; \"7\"= x}");
    EXPECT_TRUE(v.erase("a/b"));
    EXPECT_FALSE(v.erase("a/b"));
    EXPECT_FALSE(v.erase("x/y"));
    EXPECT_FALSE(v.erase("a/c/d"));
    EXPECT_TRUE(v.erase("list/0"));
    EXPECT_FALSE(v.erase("list/2"));
    EXPECT_TRUE(v.erase("7"));
    EXPECT_FALSE(v.erase(7));
    EXPECT_EQ(v, read("{a= {c= 2}; list= [2, 3]}"));
    EXPECT_THROW(v.erase(""), qrv::path_error);
    EXPECT_FALSE(qrv::value().erase("a"));
}

TEST_F(ValueWrite, push_back_appends) {
    qrv::value list;
    EXPECT_TRUE(list.push_back(1));
    EXPECT_TRUE(list.push_back("x"));
    EXPECT_TRUE(list.push_back(nullptr));
    EXPECT_EQ(text_of(list), "[1, x, #nil, ]");
    qrv::value set = read("<1>");
    EXPECT_TRUE(set.push_back(2));
    EXPECT_FALSE(set.push_back(1));
    EXPECT_EQ(set.size(), 2U);
    EXPECT_EQ(thrown<qrv::type_error>([] { read("{}").push_back(1); }),
              "expected a vector or a set, but it is a map");
}

TEST_F(ValueWrite, insert_moves_later_entries) {
    qrv::value list = read("[1, 3]");
    list.insert(1, 2);
    list.insert(0, 0);
    list.insert(4, 4);
    EXPECT_EQ(text_of(list), "[0, 1, 2, 3, 4, ]");
    EXPECT_EQ(thrown<qrv::path_error>([&] { list.insert(6, 6); }), "6: the vector ends at 5");
    EXPECT_THROW(list.insert(std::numeric_limits<std::size_t>::max(), 6), qrv::path_error);
    qrv::value set = read("<1>");
    EXPECT_THROW(set.insert(0, 5), qrv::type_error);
}

TEST_F(ValueWrite, clear_empties_all_copies) {
    qrv::value v = read("{a= 1}");
    qrv::value const copy = v;
    v.clear();
    EXPECT_TRUE(copy.empty());
    EXPECT_THROW(qrv::value(5).clear(), qrv::type_error);
}

TEST_F(ValueWrite, rename_keeps_value_and_position) {
    qrv::value v = read("{a= 1; \"b/c\"= 2; d= 3}");
    qrv::value const value = v["b/c"];
    v.rename("b/c", "x y");
    EXPECT_EQ(v, read("{a= 1; \"x y\"= 2; d= 3}"));
    EXPECT_TRUE(v["x y"].is_shared_with(value));
    v.rename("a", "a");
    EXPECT_EQ(thrown<qrv::path_error>([&] { v.rename("no", "b"); }), "no: nothing is there");
    EXPECT_THROW(v.rename("a", "d"), std::invalid_argument);
    EXPECT_EQ(v.size(), 3U);
    EXPECT_THROW(read("[1]").rename("a", "b"), qrv::type_error);
}

TEST_F(ValueWrite, merge_joins_containers_and_replaces_the_rest) {
    qrv::value v = read("{a= 1; m= {x= 1; y= 2}; l= [1]; s= <1>; only= 5; t= 1}");
    v.merge(read("{a= 2; m= {y= 3; z= 4}; l= [2]; s= <1, 2>; new= 6; t= {u= 1}}"));
    EXPECT_EQ(v, read("{a= 2; m= {x= 1; y= 3; z= 4}; l= [1, 2]; s= <1, 2>; "
                      "only= 5; t= {u= 1}; new= 6}"));
    v.merge(v);
    v.merge(nullptr);
    EXPECT_EQ(v.size(), 7U);
    EXPECT_EQ(v.at("l").size(), 2U);
    qrv::value none;
    none.merge(read("{a= 1}"));
    EXPECT_EQ(none.at("a"), 1);
    EXPECT_THROW(v.merge(5), qrv::type_error);
    EXPECT_THROW(qrv::value(5).merge(v), qrv::type_error);
}

TEST_F(ValueWrite, merging_shared_parts_terminates) {
    qrv::value part = read("{a= 1}");
    qrv::value v, w;
    v["x"] = part;
    v["y"] = part;
    w["x"] = read("{b= 2}");
    w["y"] = w.at("x");
    v.merge(w);
    EXPECT_EQ(part, read("{a= 1; b= 2}"));
}

TEST_F(ValueWrite, assign_changes_the_object_that_is_shared) {
    qrv::value a = 5;
    qrv::value const b = a;
    a.assign(6);
    EXPECT_EQ(b, 6);
    a = 7;
    EXPECT_EQ(b, 6);
    a.assign(2.0);
    EXPECT_TRUE(a.is_int()); // the type stays
    EXPECT_EQ(a, 2);
    qrv::value list = read("[1, 2]");
    qrv::value const same = list;
    list.assign(read("[3]"));
    EXPECT_EQ(text_of(same), "[3, ]");
}

TEST_F(ValueWrite, assign_loses_no_digit) {
    qrv::value number = 5;
    EXPECT_EQ(thrown<qrv::type_error>([&] { number.assign(2.7); }),
              "expected int, but it is a double: 2.70000");
    EXPECT_EQ(thrown<qrv::type_error>([&] { number.assign(0.5F); }),
              "expected int, but it is a float: 0.500000f");
    EXPECT_EQ(thrown<std::out_of_range>([&] { number.assign(2147483648.0); }),
              "2147483648.0 does not fit: the range is -2147483648 to 2147483647");
    for (double const x : {-2147483649.0, 1e300, -1e300})
        EXPECT_THROW(number.assign(x), std::out_of_range) << x;
    for (double const x :
         {std::numeric_limits<double>::infinity(), std::numeric_limits<double>::quiet_NaN()})
        EXPECT_THROW(number.assign(x), qrv::type_error) << x;
    EXPECT_EQ(number, 5);
    number.assign(2147483647.0);
    EXPECT_EQ(number, 2147483647);
    number.assign(-2147483648.0);
    EXPECT_EQ(number, -2147483647 - 1);
}

TEST_F(ValueWrite, assign_of_a_number_has_the_rules_of_get) {
    qrv::value truth = true, narrow = 1.5F, wide = 1.5;
    EXPECT_EQ(thrown<qrv::type_error>([&] { truth.assign(5); }),
              "expected bool, but it is an int: 5");
    EXPECT_THROW(wide.assign(true), qrv::type_error);
    EXPECT_THROW(narrow.assign(16777217), qrv::type_error);
    EXPECT_THROW(narrow.assign(1e300), std::out_of_range);
    EXPECT_EQ(narrow, 1.5F);
    narrow.assign(0.1);
    EXPECT_EQ(narrow, 0.1F);
    wide.assign(3);
    EXPECT_EQ(wide, 3.0);
    qrv::value hexadecimal = read("intf(0x1F)");
    EXPECT_THROW(hexadecimal.assign(2.7), qrv::type_error);
    hexadecimal.assign(32.0);
    EXPECT_EQ(text_of(hexadecimal), "intf(0x20)");
}

TEST_F(ValueWrite, assign_of_a_container_replaces_the_entries) {
    qrv::value list = read("[1, 2, 3]");
    list.assign(qrv::vector{list.at(2), list.at(1), list.at(0)});
    EXPECT_EQ(list, read("[3, 2, 1]"));
    qrv::value const held = list.at(0);
    list.assign(read("[2.7, 5.0e9, x]"));
    EXPECT_EQ(list, read("[2.7, 5.0e9, x]"));
    EXPECT_EQ(held, 3);
    qrv::value map = read("{x= 1; y= 2; z= 3}");
    map.assign(qrv::map{{"y", map.at("x")}, {"x", map.at("y")}});
    EXPECT_EQ(map, read("{y= 1; x= 2}"));
    map.assign(read("[a, b]"));
    EXPECT_EQ(map, read("{0= a; 1= b}"));
    qrv::value nested = read("[[1, 2], #nil]");
    nested.assign(nested.at(0));
    EXPECT_EQ(nested, read("[1, 2]"));
    qrv::value const shared = read("{a= 1}");
    nested.assign(qrv::vector{shared, shared});
    EXPECT_TRUE(nested.at(0).is_shared_with(shared));
    EXPECT_TRUE(nested.at(1).is_shared_with(shared));
    nested.assign(qrv::vector{});
    EXPECT_TRUE(nested.empty());
    EXPECT_TRUE(nested.is_vector());
}

TEST_F(ValueWrite, assign_that_a_container_refuses_changes_nothing) {
    qrv::value map = read("{a= 1; b= 2}");
    dynamic_cast<cMapObj &>(*map.object()).set_entrytype(&cat::type_int());
    EXPECT_THROW(map.assign(read("{c= 3; d= x}")), qrv::error);
    EXPECT_EQ(map, read("{a= 1; b= 2}"));
    map.assign(read("{c= 3}"));
    EXPECT_EQ(map, read("{c= 3}"));
}

TEST_F(ValueWrite, assign_of_a_value_that_the_type_refuses_is_a_type_error) {
    qrv::value a = 5;
    EXPECT_THROW(a.assign("x y"), qrv::type_error);
    EXPECT_THROW(a.assign(nullptr), qrv::type_error);
    EXPECT_EQ(a, 5);
    qrv::value nil;
    EXPECT_THROW(nil.assign(5), qrv::type_error);
    qrv::value constant = cat::btrue();
    EXPECT_THROW(constant.assign(false), qrv::error);
    EXPECT_EQ(constant, true);
}

TEST_F(ValueWrite, clone_shares_nothing_with_the_original_and_keeps_sharing_inside) {
    qrv::value part = read("{a= 1}");
    qrv::value v;
    v["x"] = part;
    v["y"] = part;
    qrv::value copy = v.clone();
    EXPECT_EQ(copy, v);
    EXPECT_TRUE(copy.at("x").is_shared_with(copy.at("y")));
    copy.set("x/a", 2);
    EXPECT_EQ(part.at("a"), 1);
    EXPECT_EQ(copy.at("y/a"), 2);
    EXPECT_TRUE(qrv::value().clone().is_nil());
    qrv::value const number = 5;
    EXPECT_FALSE(number.clone().is_shared_with(number));
}

TEST_F(ValueWrite, clone_keeps_comments_and_layout) {
    qrv::value v = read("{a= {x= 1}; b= [1]}");
    v.at("a").set_comment("inside");
    v.at("a").at("x").set_comment("a number");
    v.at("a").one_line(true);
    v.at("b").one_line(false);
    qrv::value const copy = v.clone();
    EXPECT_EQ(text_of(copy), text_of(v));
    EXPECT_EQ(copy.at("a/x").comment(), "a number");
    EXPECT_TRUE(copy.at("a").one_line());
}

TEST_F(ValueWrite, the_only_owner_of_a_container_cannot_put_it_into_itself) {
    for (char const *text : {"[1]", "<1>"}) {
        qrv::value v = read(text);
        EXPECT_THROW(v.push_back(v), qrv::error);
        EXPECT_EQ(v.size(), 1u);
    }
    qrv::value v = read("[1]");
    EXPECT_THROW(v.insert(0, v), qrv::error);
    qrv::value map = read("{a= {b= 1}}");
    EXPECT_THROW(map.at("a").assign(map), qrv::error);
    EXPECT_EQ(map, read("{a= {b= 1}}"));
    map.assign(map);
    EXPECT_EQ(map.at("a/b"), 1);
}

TEST_F(ValueWrite, an_entry_that_is_nil_becomes_the_container) {
    qrv::value v = read("{list= #nil; map= #nil}");
    EXPECT_TRUE(v["list"].push_back(1));
    v["map"].merge(read("{a= 2}"));
    EXPECT_EQ(v, read("{list= [1]; map= {a= 2}}"));
    EXPECT_THROW(v["absent"].push_back(1), qrv::path_error);
}

TEST_F(ValueWrite, a_nil_that_is_not_a_variable_is_refused) {
    qrv::value v = read("{list= #nil}");
    EXPECT_THROW(v.at("list").push_back(1), qrv::type_error);
    EXPECT_THROW(v.at("list").set("a", 1), qrv::type_error);
    EXPECT_THROW(v.at("list").set(0, 1), qrv::type_error);
    EXPECT_THROW(v.at("list").merge(read("{a= 1}")), qrv::type_error);
    EXPECT_EQ(v, read("{list= #nil}"));
}

TEST_F(ValueWrite, a_value_that_would_contain_itself_is_refused) {
    qrv::value map = read("{a= {}; l= [1]; s= <1>}");
    EXPECT_THROW(map.set("x", map), qrv::error);
    EXPECT_THROW(map.set("a/b/c", map), qrv::error);
    qrv::value list = map.at("l");
    EXPECT_THROW(list.push_back(list), qrv::error);
    EXPECT_THROW(list.push_back(map), qrv::error);
    EXPECT_THROW(list.set(0, map), qrv::error);
    EXPECT_THROW(list.insert(0, map), qrv::error);
    qrv::value set = map.at("s");
    EXPECT_THROW(set.push_back(map), qrv::error);
    EXPECT_EQ(map, read("{a= {}; l= [1]; s= <1>}"));
}

TEST_F(ValueWrite, a_program_hears_of_each_change_once) {
    qrv::value map = read("{a= 1; l= [1]; s= <1>}");
    qrv::value list = map.at("l"), set = map.at("s");
    cListener of_map(map), of_list(list), of_set(set);
    map.set("a", 2);
    EXPECT_EQ(of_map.count, 1);
    map.set("x/y/z", 2); // one write into the map
    EXPECT_EQ(of_map.count, 2);
    map.erase("x");
    map.erase("x"); // is not there
    EXPECT_EQ(of_map.count, 3);
    list.push_back(2);
    list.insert(0, 0);
    list.set(0, 5);
    list.erase(0);
    EXPECT_EQ(of_list.count, 4);
    set.push_back(1); // is there
    set.push_back(2);
    EXPECT_EQ(of_set.count, 1);
    map.rename("a", "b");
    map.assign(read("{b= 1}"));
    map.clear();
    map.clear(); // is empty
    EXPECT_EQ(of_map.count, 6);
    EXPECT_THROW(map.set("y", map), qrv::error);
    EXPECT_EQ(of_map.count, 6);
}

TEST_F(ValueWrite, an_exception_of_a_slot_is_thrown_after_the_change) {
    qrv::value map = read("{a= 1}");
    cListener listener(map);
    listener.throws = true;
    EXPECT_EQ(thrown<std::runtime_error>([&] { map.set("a", 2); }), "from a slot");
    EXPECT_EQ(thrown<std::runtime_error>([&] { map["b"]["c"] = 3; }), "from a slot");
    EXPECT_EQ(thrown<std::runtime_error>([&] { map.erase("a"); }), "from a slot");
    listener.throws = false;
    EXPECT_EQ(map, read("{b= {c= 3}}"));
    EXPECT_EQ(listener.count, 3);
}

TEST_F(ValueWrite, the_rules_of_a_specification_hold) {
    qrv::value map = read("{}");
    auto &object = dynamic_cast<cMapObj &>(*map.object());
    object.set_attspec("n", specref::adopt(new cAttspec(make<cObjD<int>>(42), asf_fixtype)));
    EXPECT_EQ(map.at("n"), 42); // the default
    map.set("n", 43);
    unsigned const throw_mask = cat::errhandler().throw_mask();
    EXPECT_EQ(thrown<qrv::type_error>([&] { map.set("n", "x"); }),
              "n: FIXED TYPE attribute, key 'n' in object type 'map'");
    EXPECT_EQ(map.at("n"), 43);
    EXPECT_EQ(cat::errhandler().throw_mask(), throw_mask);
}

TEST_F(ValueWrite, const_keys_hold) {
    qrv::value map = read("{a= 1}");
    map.object()->setflags(of_const_keys);
    map.set("a", 2);
    EXPECT_THROW(map.set("b", 1), qrv::error);
    EXPECT_THROW(map.clear(), qrv::error);
    EXPECT_THROW(map.rename("a", "b"), qrv::error);
    EXPECT_EQ(map, read("{a= 2}"));
}

TEST_F(ValueWrite, an_entry_without_the_entry_type_of_the_container_is_refused) {
    qrv::value map = read("{}");
    dynamic_cast<cMapObj &>(*map.object()).set_entrytype(&cat::type_int());
    map.set("a", 1);
    EXPECT_EQ(thrown<qrv::type_error>([&] { map.set("b", "x"); }),
              "b: expected int, but it is a string: \"x\"");
    EXPECT_EQ(map.size(), 1U);
}

TEST_F(ValueWrite, very_deep_values_end_in_an_exception_and_not_in_a_crash) {
    qrv::value const deep = nested(test::sanitized ? 20000 : 200000);
    EXPECT_THROW(static_cast<void>(deep.paths_of(5)), qrv::error);
    std::string path = "a";
    for (int i = 0; i < 200000; ++i) path += "/a";
    qrv::value v;
    EXPECT_THROW(v.set(path, 1), qrv::error);
    EXPECT_TRUE(v.is_nil());
}

TEST_F(ValueWrite, a_set_refuses_a_value_that_it_has_at_another_position) {
    qrv::value set = qrv::set{3, 4};
    int changes = 0;
    auto const watch = set.on_change([&](qrv::change const &) { ++changes; });
    EXPECT_EQ(thrown<qrv::error>([&] { set.set(0, 4); }), "0: the set has an equal value already");
    EXPECT_EQ(thrown<qrv::error>([&] { set["x"] = 4; }), "x: the set has an equal value already");
    EXPECT_THROW(set.set(9, 4), qrv::error);
    EXPECT_EQ(changes, 0);
    set.set(0, 3);
    set.set(0, 5);
    set.set(2, 6);
    EXPECT_EQ(text_of(set), "<5, 4, 6, >");
    EXPECT_EQ(changes, 3);
}

TEST_F(ValueWrite, assign_of_a_map_to_a_vector_or_set_is_refused) {
    qrv::value const map = read("{a= 1}");
    qrv::value list = read("[1]"), set = read("<1>"), target = read("{b= 2}");
    EXPECT_EQ(thrown<qrv::type_error>([&] { list.assign(map); }),
              "expected a vector or a set, but it is a map");
    EXPECT_THROW(set.assign(map), qrv::type_error);
    EXPECT_EQ(list, read("[1]"));
    EXPECT_EQ(set, read("<1>"));
    list.assign(read("<7, 8>"));
    EXPECT_EQ(list, read("[7, 8]"));
    set.assign(read("[7, 7]"));
    EXPECT_EQ(set, read("<7>"));
    target.assign(read("[x]"));
    EXPECT_EQ(target, read("{0= x}"));
}

TEST_F(ValueWrite, items_are_found_and_removed_by_value) {
    qrv::value tags = qrv::set{"new", 3, 2.5};
    EXPECT_TRUE(tags.contains_item("new"));
    EXPECT_TRUE(tags.contains_item(3));
    EXPECT_FALSE(tags.contains_item(0)); // a position, not an item
    EXPECT_FALSE(tags.contains_item(2.4));
    EXPECT_TRUE(tags.erase_item("new"));
    EXPECT_FALSE(tags.erase_item("new"));
    EXPECT_EQ(tags, qrv::value(qrv::set{3, 2.5}));
    qrv::value list = read("[a, b, a, [1]]");
    EXPECT_TRUE(list.erase_item("a"));
    EXPECT_TRUE(list.contains_item("a"));
    EXPECT_TRUE(list.contains_item(read("[1]")));
    EXPECT_EQ(text_of(list), "[b, a, [1, ], ]");
    EXPECT_FALSE(qrv::value().contains_item(1));
    qrv::value map = read("{a= 1}");
    EXPECT_EQ(thrown<qrv::type_error>([&] { static_cast<void>(map.contains_item(1)); }),
              "expected a vector or a set, but it is a map");
    EXPECT_EQ(thrown<qrv::type_error>([&] { map["a"].erase_item(1); }),
              "a: expected a vector or a set, but it is an int: 1");
}

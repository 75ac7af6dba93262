// References: the results of operator[] of a variable.

#include "tests/value/value_support.h"

using namespace value_test;

namespace {

class Reference : public Quiet {};

qrv::value make() { return read("{bus= {baud= 9600}}"); }

} // namespace

TEST_F(Reference, creates_the_levels_that_are_missing_when_it_is_assigned) {
    qrv::value v;
    v["bus"]["gateway"]["name"] = "rack";
    v["bus"]["baud"] = 9600;
    v[3] = true;
    EXPECT_EQ(v, read("{bus= {gateway= {name= rack}; baud= 9600}; 3= true}"));
}

TEST_F(Reference, creates_nothing_when_it_is_read) {
    qrv::value v;
    EXPECT_FALSE(v["a"]["b"].exists());
    EXPECT_FALSE(v["a"].contains("b"));
    EXPECT_EQ(v["a"].get_or("b", 3), 3);
    EXPECT_EQ(v["a"].get<int>("b"), std::nullopt);
    EXPECT_EQ(v["a"].find("b"), std::nullopt);
    EXPECT_EQ(v["a"].get_if<int>(), std::nullopt);
    EXPECT_FALSE(v["a"].erase("b"));
    EXPECT_EQ(thrown<qrv::path_error>([&] { static_cast<void>(v["a"]["b c"].size()); }),
              "a/\"b c\": nothing is there");
    EXPECT_THROW(static_cast<void>(qrv::value(v["a"])), qrv::path_error);
    EXPECT_TRUE(v.is_nil());
}

TEST_F(Reference, accepts_a_string_as_one_key) {
    qrv::value v;
    v["a/b"] = 1;
    v["3"] = 2;
    EXPECT_EQ(v, read("{\"a/b\"= 1; \"3\"= 2}"));
    EXPECT_EQ(v["a/b"], 1);
}

TEST_F(Reference, accepts_keys_of_any_length) {
    qrv::value v;
    for (std::size_t const length : {0U, 1U, 253U, 254U, 255U, 70000U}) {
        std::string const key(length, 'k');
        v[key][5][key] = static_cast<int>(length);
        EXPECT_EQ(v[key][5][key], static_cast<int>(length));
        EXPECT_TRUE(v[key][5].contains(key));
    }
    EXPECT_EQ(v.size(), 6U);
}

TEST_F(Reference, reads_as_the_value_does) {
    qrv::value v = make();
    EXPECT_EQ(v["bus"]["baud"].get<int>(), 9600);
    EXPECT_EQ(v["bus"].get<int>("baud"), 9600);
    EXPECT_TRUE(v["bus"]["baud"] == 9600);
    EXPECT_TRUE(9600 == v["bus"]["baud"]);
    EXPECT_TRUE(v["bus"]["baud"] != v["bus"]);
    EXPECT_TRUE(v["bus"]["baud"] < 9601);
    EXPECT_TRUE(v["bus"] == v.at("bus"));
    EXPECT_TRUE(v.at("bus") == v["bus"]);
    EXPECT_EQ(v["bus"].size(), 1U);
    EXPECT_TRUE(v["bus"].is_map());
    qrv::value const bus = v["bus"];
    EXPECT_TRUE(bus.is_shared_with(v["bus"]));
    int count = 0;
    for (auto const &[key, item] : v["bus"].items()) count += item == 9600 && key == "baud";
    for (qrv::value const &item : v["bus"]) count += item == 9600;
    EXPECT_EQ(count, 2);
    EXPECT_EQ(thrown<qrv::type_error>([&] { v["bus"]["baud"].get<std::string>(); }),
              "bus/baud: expected string, but it is an int: 9600");
    EXPECT_EQ(text_of(v["bus"]["baud"]), "9600");
}

TEST_F(Reference, changes_existing_containers) {
    qrv::value v = read("{list= [1]; m= {a= 1}}");
    v["list"].push_back(2);
    v["list"].insert(0, 0);
    v["list"][3] = 3;
    v["m"].rename("a", "b");
    v["m"].merge(read("{c= 2}"));
    v["m"].erase("b");
    EXPECT_EQ(v, read("{list= [0, 1, 2, 3]; m= {c= 2}}"));
    v["m"].clear();
    EXPECT_TRUE(v.at("m").empty());
    EXPECT_THROW(v["new"].push_back(1), qrv::path_error);
    EXPECT_THROW(v["list"][9] = 1, qrv::path_error);
    EXPECT_THROW(v["list"]["a"] = 1, qrv::path_error);
    EXPECT_THROW(v["list"][0]["a"] = 1, qrv::type_error);
}

TEST_F(Reference, of_a_temporary_value_keeps_its_object) {
    auto place = make()["bus"]["baud"];
    EXPECT_EQ(place, 9600);
    qrv::value v = make();
    v.at("bus")["baud"] = 1; // the temporary shares the object
    EXPECT_EQ(v.at("bus/baud"), 1);
    EXPECT_EQ(thrown<qrv::path_error>([] { qrv::value()["a"] = 1; }),
              "a: a value that is nil, and not a variable, has no entries");
}

TEST_F(Reference, sees_later_changes) {
    qrv::value v = make();
    auto place = v["bus"]["baud"];
    v.set("bus/baud", 5);
    EXPECT_EQ(place, 5);
    v.set("bus", read("{baud= 6}"));
    EXPECT_EQ(place, 6);
    v.erase("bus");
    EXPECT_FALSE(place.exists());
}

TEST_F(Reference, is_assigned_the_value_of_another) {
    qrv::value v = make();
    v["copy"] = v["bus"];
    EXPECT_TRUE(v.at("copy").is_shared_with(v.at("bus")));
    EXPECT_THROW(v["x"] = v["nothing"], qrv::path_error);
    EXPECT_FALSE(v.contains("x"));
    v["bus"] = nullptr;
    EXPECT_TRUE(v.at("bus").is_nil());
    v["bus"]["baud"] = 1;
    EXPECT_EQ(v.at("bus/baud"), 1);
}

TEST_F(Reference, a_reference_into_a_nil_variable_assigns_to_the_variable) {
    qrv::value v;
    v["x"] = v; // nil, as it was
    EXPECT_EQ(v, read("{x= #nil}"));
    EXPECT_THROW(v["y"] = v, qrv::error);
    EXPECT_EQ(v.size(), 1U);
    qrv::value copy;
    qrv::value other = copy;
    copy["a"] = 1;
    EXPECT_TRUE(other.is_nil());
}

TEST_F(Reference, assigning_replaces_and_copies_keep_their_object) {
    qrv::value v = make();
    qrv::value const before = v["bus"]["baud"];
    v["bus"]["baud"] = 5;
    EXPECT_EQ(before, 9600);
    v["bus"]["baud"].assign(6);
    EXPECT_EQ(v.at("bus/baud"), 6);
}

TEST_F(Reference, names_the_whole_path_in_errors) {
    qrv::value v = read("{a= {b= 5; list= [1]; m= {k= 1}; n= #nil}}");
    auto const place = [&] { return v["a"]["b"]; };
    std::string const scalar = "a/b: expected a container, but it is an int: 5";
    std::string const list = "a/b: expected a vector or a set, but it is an int: 5";
    EXPECT_EQ(thrown<qrv::type_error>([&] { static_cast<void>(place().size()); }), scalar);
    EXPECT_EQ(thrown<qrv::type_error>([&] { static_cast<void>(place().empty()); }), scalar);
    EXPECT_EQ(thrown<qrv::type_error>([&] { static_cast<void>(place().begin()); }), scalar);
    EXPECT_EQ(thrown<qrv::type_error>([&] { static_cast<void>(place().items()); }), scalar);
    EXPECT_EQ(thrown<qrv::type_error>([&] { place().merge(v); }), scalar);
    EXPECT_EQ(thrown<qrv::type_error>([&] { place().push_back(1); }), list);
    EXPECT_EQ(thrown<qrv::type_error>([&] { place().insert(0, 1); }),
              "a/b: expected a vector, but it is an int: 5");
    EXPECT_EQ(thrown<qrv::path_error>([&] { v["a"]["list"].insert(2, 1); }),
              "a/list/2: the vector ends at 1");
    EXPECT_EQ(thrown<qrv::type_error>([&] { place().clear(); }),
              "a/b: expected a map, a vector or a set, but it is an int: 5");
    EXPECT_EQ(thrown<qrv::type_error>([&] { place().rename("x", "y"); }),
              "a/b: expected a map, but it is an int: 5");
    EXPECT_EQ(thrown<qrv::path_error>([&] { v["a"]["m"].rename("x", "y"); }),
              "a/m/x: nothing is there");
    EXPECT_EQ(thrown<qrv::type_error>([&] { place().assign("x"); }).substr(0, 5), "a/b: ");
    EXPECT_EQ(thrown<qrv::path_error>([&] { static_cast<void>(v["a"].at("x/y")); }),
              "a/x/y: nothing is there");
    EXPECT_EQ(thrown<qrv::path_error>([&] { static_cast<void>(v["a"]["list"].at(1)); }),
              "a/list/1: nothing is there");
    EXPECT_EQ(thrown<qrv::type_error>([&] { v["a"].get<std::string>("b"); }),
              "a/b: expected string, but it is an int: 5");
    EXPECT_EQ(thrown<qrv::type_error>([&] { v["a"].get_or("b", "x"); }),
              "a/b: expected string, but it is an int: 5");
    EXPECT_EQ(thrown<std::out_of_range>([&] { v["a"]["b"].assign(1e300); }),
              "a/b: 1.00000e+300 does not fit: the range is -2147483648 to 2147483647");
    EXPECT_EQ(thrown<qrv::type_error>([&] { v["a"]["n"].set_comment("x"); }).substr(0, 5), "a/n: ");
    EXPECT_EQ(v, read("{a= {b= 5; list= [1]; m= {k= 1}; n= #nil}}"));
}

TEST_F(Reference, sets_entries_below_it) {
    qrv::value v;
    v["a"].set("b/c", 1);
    v["a"].set("/b/d", 2);
    v["a"]["list"].set("", read("[x]"));
    v["a"]["list"].set(1, "y");
    EXPECT_EQ(v, read("{a= {b= {c= 1; d= 2}; list= [x, y]}}"));
    EXPECT_EQ(thrown<qrv::path_error>([&] { v["a"].set("b//c", 1); }),
              "a/b//c: a key is missing between two slashes; the empty key is \"\"");
    EXPECT_EQ(thrown<qrv::type_error>([&] { v["a"].set("b/c/d", 1); }),
              "a/b/c: expected a container, but it is an int: 1");
    EXPECT_EQ(thrown<qrv::path_error>([&] { v["a"]["list"].set(9, 1); }).substr(0, 10),
              "a/list/9: ");
}

TEST_F(Reference, is_a_key_where_it_has_one) {
    qrv::value v = read("{key= name; name= lamp; n= 3; 3= three}");
    qrv::value const constant = v;
    EXPECT_EQ(v[v["key"]], "lamp");
    EXPECT_EQ(constant[v["key"]], "lamp");
    EXPECT_EQ(v.at(v["n"]), "three");
    EXPECT_TRUE(v.contains(v["key"]));
    EXPECT_EQ(qrv::path_of(v["key"], v["n"]), "name/3");
    v[v["key"]] = 5;
    EXPECT_EQ(v.at("name"), 5);
    EXPECT_THROW(v[v["x"]], qrv::path_error);
    EXPECT_EQ(std::hash<qrv::reference>()(v["name"]), std::hash<qrv::value>()(5));
    EXPECT_THROW(v.push_back(1), qrv::type_error);
}

TEST_F(Reference, returns_entries_by_position) {
    qrv::value v = read("{list= [7, x]}");
    EXPECT_EQ(v["list"].get<int>(0), 7);
    EXPECT_EQ(v["list"].get<int>(2), std::nullopt);
    EXPECT_EQ(v["list"].get_or(2, 4), 4);
    EXPECT_TRUE(v["list"].contains_item("x"));
    EXPECT_TRUE(v["list"].erase_item("x"));
    EXPECT_FALSE(v["none"].contains_item("x"));
    EXPECT_THROW(v["none"].erase_item("x"), qrv::path_error);
}

TEST_F(Reference, accepts_a_container_as_the_default) {
    qrv::value v = read("{list= [7]}");
    qrv::value const none = v.get_or("none", qrv::vector{});
    EXPECT_TRUE(none.is_vector());
    EXPECT_EQ(v.get_or("list", qrv::vector{}), read("[7]"));
    EXPECT_EQ(v.get_or("none", v["list"]), read("[7]"));
    EXPECT_EQ(v["list"].get_or(3, qrv::map{}), read("{}"));
}

// Places: what operator[] of a variable gives.

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

TEST_F(Reference, takes_a_string_as_one_key) {
    qrv::value v;
    v["a/b"] = 1;
    v["3"] = 2;
    EXPECT_EQ(v, read("{\"a/b\"= 1; \"3\"= 2}"));
    EXPECT_EQ(v["a/b"], 1);
}

TEST_F(Reference, takes_keys_of_any_length) {
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

TEST_F(Reference, changes_what_is_there) {
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

TEST_F(Reference, of_a_value_that_dies_keeps_the_object) {
    auto place = make()["bus"]["baud"];
    EXPECT_EQ(place, 9600);
    qrv::value v = make();
    v.at("bus")["baud"] = 1; // the temporary shares the object
    EXPECT_EQ(v.at("bus/baud"), 1);
    EXPECT_EQ(thrown<qrv::path_error>([] { qrv::value()["a"] = 1; }),
              "a: a value that is nil, and not a variable, has no entries");
}

TEST_F(Reference, sees_what_has_changed_since) {
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

TEST_F(Reference, of_a_variable_that_is_nil_assigns_to_the_variable) {
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

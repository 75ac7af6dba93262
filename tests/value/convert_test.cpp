// C++ types that become values and back: sizes and limits, what fits and what does not, and the
// path that an error names.
#include "qrv/text/write/cwriter.h"
#include "qrv/value.h"
#include "tests/support/fixture.h"

#include <gtest/gtest.h>

#include <array>
#include <deque>
#include <list>
#include <map>
#include <set>
#include <span>
#include <sstream>
#include <tuple>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace shapes {
struct Point {
    double x = 0;
    double y = 0;
    friend bool operator==(Point const &, Point const &) = default;
};
QRV_DESCRIBE(Point, x, y)

enum class Mode { off, slow = 4, fast = 5 };
QRV_DESCRIBE_ENUM(Mode, off, slow, fast)

enum class Plain : unsigned char { none, some = 200 };

struct Axis {
    std::string name;
    std::optional<int> limit;
    std::vector<Point> points;
    Mode mode = Mode::off;
    friend bool operator==(Axis const &, Axis const &) = default;
};
QRV_DESCRIBE(Axis, name, limit, points, mode)

// Overloads written by hand.
struct Colour {
    int red = 0, green = 0;
};
void to_value(Colour const &from, qrv::value &to) { to = qrv::vector{from.red, from.green}; }
void from_value(qrv::value const &from, Colour &to) {
    to = {from.at(0).get<int>(), from.at(1).get<int>()};
}

struct Unknown {};

struct Empty {};
QRV_DESCRIBE(Empty)

struct Narrow {
    float ratio = 0;
};
QRV_DESCRIBE(Narrow, ratio)
} // namespace shapes

namespace {
using qrv::value;

class ValueConvert : public QrvTest {};

template <class T> std::string text_of(T const &x) { return cat::as_text(value(x).object()); }

template <class T> std::string type_failure(value const &v) {
    try {
        static_cast<void>(v.get<T>());
    } catch (qrv::type_error const &failure) {
        return failure.what();
    }
    return "no type_error";
}

static_assert(std::convertible_to<std::vector<int>, value>);
static_assert(std::convertible_to<std::span<int const>, value>);
static_assert(!qrv::detail::gettable<std::span<int const>>);
static_assert(!std::convertible_to<shapes::Unknown, value>);
static_assert(!std::convertible_to<std::vector<shapes::Unknown>, value>);
static_assert(!qrv::detail::gettable<shapes::Unknown>);
static_assert(!std::convertible_to<std::optional<shapes::Unknown>, value>);
static_assert(!std::convertible_to<std::vector<char>, value>);
static_assert(!std::constructible_from<qrv::vector, shapes::Unknown>);
static_assert(!std::convertible_to<int, qrv::vector>);

TEST_F(ValueConvert, sequences_become_vectors) {
    EXPECT_EQ(text_of(std::vector<int>{1, 2, 3}), "[1, 2, 3, ]");
    EXPECT_EQ(text_of(std::vector<int>()), "[]");
    EXPECT_EQ(text_of(std::vector<bool>{true, false}), "[true, false, ]");
    EXPECT_EQ(text_of(std::deque<std::string>{"a", "b c"}), "[a, \"b c\", ]");
    EXPECT_EQ(text_of(std::list<double>{0.5}), "[0.500000, ]");
    EXPECT_EQ(text_of(std::array<int, 2>{7, 8}), "[7, 8, ]");
    int const numbers[] = {4, 5};
    EXPECT_EQ(text_of(std::span<int const>(numbers)), "[4, 5, ]");
    EXPECT_EQ(text_of(std::vector<std::vector<int>>{{1}, {}}), "[[1, ], [], ]");
}

TEST_F(ValueConvert, vectors_and_sets_become_sequences) {
    value const numbers = qrv::vector{1, 2, 3};
    EXPECT_EQ(numbers.get<std::vector<int>>(), (std::vector<int>{1, 2, 3}));
    EXPECT_EQ(numbers.get<std::list<double>>(), (std::list<double>{1, 2, 3}));
    EXPECT_EQ((numbers.get<std::array<int, 3>>()), (std::array<int, 3>{1, 2, 3}));
    EXPECT_EQ((qrv::set{2, 1}.get<std::vector<int>>()), (std::vector<int>{2, 1}));
    EXPECT_EQ((qrv::vector{true, false}.get<std::vector<bool>>()),
              (std::vector<bool>{true, false}));
    EXPECT_TRUE(qrv::vector().get<std::vector<int>>().empty());
}

TEST_F(ValueConvert, an_array_has_its_size) {
    EXPECT_EQ((type_failure<std::array<int, 2>>(qrv::vector{1, 2, 3})),
              "expected vector of 2, but it is a vector of 3");
    EXPECT_EQ((type_failure<std::array<int, 2>>(qrv::vector{1})),
              "expected vector of 2, but it is a vector of 1");
}

TEST_F(ValueConvert, sets_and_maps_are_converted_in_both_directions) {
    EXPECT_EQ(text_of(std::set<int>{3, 1}), "<1, 3, >");
    EXPECT_EQ((qrv::set{3, 1}.get<std::set<int>>()), (std::set<int>{1, 3}));
    EXPECT_EQ((qrv::vector{1, 1}.get<std::unordered_set<int>>()), (std::unordered_set<int>{1}));
    std::map<std::string, int> const ports{{"a/b", 1}, {"c", 2}};
    EXPECT_EQ((value(ports).get<std::map<std::string, int>>()), ports);
    EXPECT_EQ(value(ports)["a/b"], 1);
    std::unordered_map<int, std::string> const names{{-1, "x"}, {5, "y"}};
    EXPECT_EQ((value(names).get<std::unordered_map<int, std::string>>()), names);
    EXPECT_EQ((value(std::map<value, int>()).size()), 0U);
}

TEST_F(ValueConvert, tuples_and_optionals) {
    std::tuple<int, std::string, bool> const three{1, "two", true};
    EXPECT_EQ((value(three).get<std::tuple<int, std::string, bool>>()), three);
    EXPECT_EQ(text_of(std::pair<int, double>(1, 0.5)), "[1, 0.500000, ]");
    EXPECT_EQ(text_of(std::optional<int>()), "#nil");
    EXPECT_EQ(text_of(std::optional<int>(4)), "4");
    EXPECT_EQ(value().get<std::optional<int>>(), std::nullopt);
    EXPECT_EQ(value(4).get<std::optional<int>>(), 4);
    EXPECT_EQ(type_failure<std::optional<int>>("x"), "expected int, but it is a string: \"x\"");
}

TEST_F(ValueConvert, structs_become_maps_in_the_order_of_their_members) {
    shapes::Axis const axis{"z", {}, {{1, 2}, {3, 4.5}}, shapes::Mode::fast};
    value const v = axis;
    EXPECT_EQ(v.get<shapes::Axis>(), axis);
    EXPECT_EQ(v["limit"], nullptr);
    EXPECT_EQ(v["mode"], "fast");
    EXPECT_EQ(v.at("points/1/y"), 4.5);
    EXPECT_EQ(v.get<shapes::Point>("points/0"), (shapes::Point{1, 2}));
}

TEST_F(ValueConvert, an_optional_member_may_be_missing_and_no_other) {
    value axis = qrv::map{{"name", "z"}, {"points", qrv::vector()}, {"mode", "off"}, {"more", 1}};
    EXPECT_EQ(axis.get<shapes::Axis>(), (shapes::Axis{"z", {}, {}, shapes::Mode::off}));
    axis.erase("mode");
    EXPECT_THROW(static_cast<void>(axis.get<shapes::Axis>()), qrv::path_error);
}

struct Loose {
    std::optional<int> port;
};
QRV_DESCRIBE(Loose, port)

TEST_F(ValueConvert, conversions_never_drop_or_invent_keys) {
    EXPECT_EQ(type_failure<Loose>("yes"), "expected map, but it is a string: \"yes\"");
    EXPECT_EQ(type_failure<Loose>(qrv::vector{1}), "expected map, but it is a vector");
    EXPECT_EQ(type_failure<std::vector<int>>(qrv::map{{"a", 1}}),
              "expected vector, but it is a map");
    EXPECT_EQ((type_failure<std::map<int, int>>(qrv::vector{1})),
              "expected map, but it is a vector");
}

TEST_F(ValueConvert, errors_name_the_path_of_the_part) {
    value const device = qrv::map{
        {"axes", qrv::vector{qrv::map{{"name", "x"},
                                      {"points", qrv::vector{qrv::map{{"x", 1}, {"y", "far"}}}},
                                      {"mode", "off"}}}}};
    try {
        static_cast<void>(device.get<std::vector<shapes::Axis>>("axes"));
        ADD_FAILURE();
    } catch (qrv::type_error const &failure) {
        EXPECT_STREQ(failure.what(),
                     "axes/0/points/0/y: expected double, but it is a string: \"far\"");
        EXPECT_EQ(failure.path(), "axes/0/points/0/y");
    }
    value const ports = qrv::map{{"a/b", 70000}};
    try {
        static_cast<void>(ports.get<std::map<std::string, std::uint16_t>>());
        ADD_FAILURE();
    } catch (qrv::range_error const &failure) {
        EXPECT_EQ(failure.path(), "\"a/b\"");
    }
}

TEST_F(ValueConvert, a_scalar_is_not_a_container) {
    EXPECT_EQ(type_failure<std::vector<int>>(1), "expected vector, but it is an int: 1");
    EXPECT_EQ((type_failure<std::map<int, int>>("x")), "expected map, but it is a string: \"x\"");
    EXPECT_EQ(type_failure<std::set<int>>(nullptr), "expected set, but it is nil");
}

TEST_F(ValueConvert, enumerations_by_number_and_by_name) {
    EXPECT_EQ(value(shapes::Plain::some), 200);
    EXPECT_EQ(value(200).get<shapes::Plain>(), shapes::Plain::some);
    EXPECT_EQ(value(255).get<shapes::Plain>(), static_cast<shapes::Plain>(255));
    EXPECT_THROW(static_cast<void>(value(256).get<shapes::Plain>()), qrv::range_error);
    EXPECT_THROW(static_cast<void>(value(-1).get<shapes::Plain>()), qrv::range_error);
    EXPECT_EQ(value(shapes::Mode::slow), "slow");
    EXPECT_EQ(value("fast").get<shapes::Mode>(), shapes::Mode::fast);
    EXPECT_EQ(type_failure<shapes::Mode>("medium"),
              "expected one of off, slow or fast, but it is a string: \"medium\"");
    EXPECT_EQ(type_failure<shapes::Mode>(4),
              "expected one of off, slow or fast, but it is an int: 4");
    EXPECT_THROW(value(static_cast<shapes::Mode>(1)), qrv::range_error);
}

TEST_F(ValueConvert, overloads_of_the_program) {
    EXPECT_EQ(text_of(shapes::Colour{1, 2}), "[1, 2, ]");
    EXPECT_EQ((qrv::vector{3, 4}.get<shapes::Colour>().green), 4);
    EXPECT_EQ(text_of(std::vector<shapes::Colour>{{5, 6}}), "[[5, 6, ], ]");
    value v;
    v["colour"] = shapes::Colour{7, 8};
    EXPECT_EQ(v.get<shapes::Colour>("colour")->red, 7);
    EXPECT_EQ(v.get_or("absent", shapes::Colour{9, 0}).red, 9);
}

class ValueBuild : public QrvTest {};

TEST_F(ValueBuild, a_nested_value_is_built_in_one_expression) {
    qrv::map const plan{{"title", "Cold start"},
                        {"runs", 3},
                        {"range", qrv::map{{"low", -40.0}, {"high", 85.0}}},
                        {"steps", qrv::vector{"cool down", "wait", "switch on"}}};
    EXPECT_EQ(plan.size(), 4U);
    EXPECT_EQ(plan.at("range/high"), 85.0);
    EXPECT_EQ(plan.at("steps/1"), "wait");
}

TEST_F(ValueBuild, keys_other_than_identifiers_and_repeated_keys) {
    qrv::map const m{{"a/b", 1}, {7, "seven"}, {"", 2}, {"a/b", 3}};
    EXPECT_EQ(m.size(), 3U);
    EXPECT_EQ(m["a/b"], 3);
    EXPECT_EQ(m[7], "seven");
    EXPECT_EQ(m[""], 2);
    EXPECT_EQ(m.items().begin()->key, "a/b");
}

TEST_F(ValueBuild, a_container_is_not_a_key) {
    EXPECT_THROW((qrv::map{{qrv::vector{1}, 2}}), qrv::error);
    EXPECT_THROW((qrv::map{{nullptr, 2}}), qrv::error);
}

TEST_F(ValueBuild, a_single_container_in_braces_is_a_copy) {
    qrv::vector const inner{1, 2};
    qrv::vector const copy{inner};
    EXPECT_TRUE(copy.is_shared_with(inner));
    qrv::vector const moved{qrv::vector{1, 2}};
    EXPECT_EQ(moved.size(), 2U);
    qrv::vector const nested{value(inner)};
    EXPECT_EQ(nested.size(), 1U);
    EXPECT_TRUE(nested[0].is_shared_with(inner));
    qrv::vector const map_in_vector{qrv::map{{"a", 1}}};
    EXPECT_EQ(map_in_vector.at("0/a"), 1);
}

TEST_F(ValueBuild, sets_leave_equal_items_out) {
    qrv::set s{1, "a", 1, 1.0};
    EXPECT_EQ(s.size(), 3U);
    EXPECT_FALSE(s.push_back("a"));
    EXPECT_TRUE(s.push_back("b"));
}

TEST_F(ValueBuild, values_are_created_from_ranges) {
    std::vector<int> const numbers{3, 1, 3};
    EXPECT_EQ(qrv::vector::from(numbers).size(), 3U);
    EXPECT_EQ(qrv::set::from(numbers).size(), 2U);
    std::vector<std::pair<std::string, int>> const pairs{{"b", 1}, {"a", 2}};
    qrv::map const m = qrv::map::from(pairs);
    EXPECT_EQ(m.size(), 2U);
    EXPECT_EQ(m["b"], 1);
    EXPECT_EQ(m, value(m.clone()));
}

TEST_F(ValueBuild, builders_are_values) {
    qrv::map m;
    EXPECT_TRUE(m.is_map());
    EXPECT_TRUE(m.empty());
    m["a"]["b"] = 1;
    value const v = m;
    EXPECT_TRUE(v.is_shared_with(m));
    EXPECT_EQ(v.at("a/b"), 1);
    qrv::vector list;
    list.push_back(list.size());
    EXPECT_EQ(list[0], 0);
}
} // namespace

TEST_F(ValueConvert, a_struct_without_members_is_an_empty_map) {
    EXPECT_EQ(value(shapes::Empty()), value(qrv::map{}));
    EXPECT_NO_THROW(qrv::parse("{a= 1}").get<shapes::Empty>());
    EXPECT_THROW(value(1).get<shapes::Empty>(), qrv::type_error);
}

TEST_F(ValueConvert, a_float_member_is_read_from_text) {
    EXPECT_EQ(qrv::parse("{ratio= 0.1}").get<shapes::Narrow>().ratio, 0.1F);
    EXPECT_THROW(qrv::parse("{ratio= 16777217}").get<shapes::Narrow>(), qrv::type_error);
}

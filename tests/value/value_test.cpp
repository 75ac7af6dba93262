// Values: how they are created, their kinds, and how they are read.

#include "qrv/containers/cmapobj.h"
#include "qrv/core/cobjd.h"
#include "qrv/core/ctypes.h"
#include "qrv/util/cintvalf.h"
#include "tests/value/value_support.h"

#include <cmath>
#include <cstdint>
#include <limits>

using namespace value_test;

namespace {

class Value : public Quiet {
  protected:
    static void SetUpTestSuite() { cat::type_intf(); } // an object that stays
};

constexpr int greatest = std::numeric_limits<int>::max();
constexpr int lowest = std::numeric_limits<int>::min();
constexpr double exact_end = 9007199254740992.0; // 2^53

} // namespace

static_assert(std::regular<qrv::value>);
static_assert(sizeof(qrv::value) == sizeof(void *));
static_assert(std::is_nothrow_default_constructible_v<qrv::value>);
static_assert(std::is_nothrow_copy_constructible_v<qrv::value>);
static_assert(std::is_nothrow_move_constructible_v<qrv::value>);

TEST_F(Value, a_literal_zero_is_a_position) {
    qrv::value v;
    v.push_back(7);
    EXPECT_EQ(v.get<int>(0), 7);
    EXPECT_EQ(v.get_or(0, 1), 7);
    EXPECT_EQ(v.get_or(1, 1), 1);
    EXPECT_EQ(v.get_or(1, "none"), "none");
    EXPECT_EQ(v.get<int>(1), std::nullopt);
    EXPECT_THROW(static_cast<void>(v.get<std::string>(0)), qrv::type_error);
}

TEST_F(Value, a_value_of_nothing_is_nil) {
    EXPECT_TRUE(qrv::value().is_nil());
    EXPECT_TRUE(qrv::value(nullptr).is_nil());
    EXPECT_TRUE(qrv::value(static_cast<char const *>(nullptr)).is_nil());
    EXPECT_TRUE(qrv::value(objref()).is_nil());
    EXPECT_TRUE(qrv::value(cat::nil()).is_nil());
    EXPECT_EQ(qrv::value().object(), cat::nil());
    EXPECT_EQ(qrv::value().type_name(), "niltype");
}

TEST_F(Value, has_the_kind_of_its_initial_value) {
    EXPECT_EQ(qrv::value(true).kind(), qrv::kind::boolean);
    EXPECT_EQ(qrv::value(5).kind(), qrv::kind::integer);
    EXPECT_EQ(qrv::value(std::uint8_t{5}).kind(), qrv::kind::integer);
    EXPECT_EQ(qrv::value(5ULL).kind(), qrv::kind::integer);
    EXPECT_EQ(qrv::value(0.5F).kind(), qrv::kind::float_number);
    EXPECT_EQ(qrv::value(0.5).kind(), qrv::kind::double_number);
    EXPECT_EQ(qrv::value(0.5L).kind(), qrv::kind::double_number);
    EXPECT_EQ(qrv::value("text").kind(), qrv::kind::string);
    EXPECT_EQ(qrv::value(std::string("text")).kind(), qrv::kind::string);
    EXPECT_EQ(qrv::value(std::string_view("text")).kind(), qrv::kind::string);
    EXPECT_EQ(read("{}").kind(), qrv::kind::map);
    EXPECT_EQ(read("[]").kind(), qrv::kind::vector);
    EXPECT_EQ(read("<>").kind(), qrv::kind::set);
}

TEST_F(Value, a_value_of_another_type_is_an_object) {
    qrv::value const v = make<cIntValF>(31, cIntFormat::fmtHex);
    EXPECT_EQ(v.kind(), qrv::kind::object);
    EXPECT_EQ(v.type_name(), "intf");
    EXPECT_FALSE(v.is_int());
    EXPECT_FALSE(v.is_container());
    EXPECT_EQ(v.get<int>(), 31);
    EXPECT_TRUE(qrv::value(objref::share(&cat::type_int())).is_object());
}

TEST_F(Value, kinds_have_names) {
    EXPECT_STREQ(qrv::name_of(qrv::kind::nil), "nil");
    EXPECT_STREQ(qrv::name_of(qrv::kind::float_number), "float");
    EXPECT_STREQ(qrv::name_of(qrv::kind::object), "object");
}

TEST_F(Value, exactly_one_question_is_answered_with_yes) {
    for (char const *text : {"#nil", "true", "1", "1.5f", "1.5", "\"a\"", "{}", "[]", "<>"}) {
        qrv::value const v = read(text);
        int const yes = v.is_nil() + v.is_bool() + v.is_int() + v.is_float() + v.is_double() +
                        v.is_string() + v.is_map() + v.is_vector() + v.is_set() + v.is_object();
        EXPECT_EQ(yes, 1) << text;
    }
}

TEST_F(Value, a_value_of_an_integer_needs_an_int_that_holds_it) {
    EXPECT_EQ(qrv::value(std::int64_t{greatest}).get<int>(), greatest);
    EXPECT_EQ(qrv::value(std::int64_t{lowest}).get<int>(), lowest);
    EXPECT_EQ(thrown<std::out_of_range>([] { qrv::value(std::int64_t{greatest} + 1); }),
              "2147483648 does not fit in an int");
    EXPECT_EQ(thrown<std::out_of_range>([] { qrv::value(std::int64_t{lowest} - 1); }),
              "-2147483649 does not fit in an int");
    EXPECT_EQ(thrown<qrv::range_error>(
                  [] { static_cast<void>(qrv::value{std::numeric_limits<std::uint64_t>::max()}); }),
              "18446744073709551615 does not fit in an int");
}

TEST_F(Value, a_value_of_a_long_double_is_rounded_and_needs_a_double_of_that_size) {
    long double const most = std::numeric_limits<double>::max();
    EXPECT_EQ(qrv::value(most).get<double>(), std::numeric_limits<double>::max());
    EXPECT_EQ(qrv::value(0.1L).get<double>(), 0.1);
    EXPECT_THROW(qrv::value(most * 2), std::out_of_range);
    EXPECT_TRUE(std::isinf(qrv::value(std::numeric_limits<long double>::infinity()).get<double>()));
    EXPECT_TRUE(
        std::isnan(qrv::value(std::numeric_limits<long double>::quiet_NaN()).get<double>()));
}

TEST_F(Value, a_value_of_a_failure_is_refused) {
    EXPECT_THROW(qrv::value{cat::bad()}, std::invalid_argument);
    EXPECT_THROW(qrv::value{cat::badfind()}, std::invalid_argument);
}

TEST_F(Value, returns_its_initial_value) {
    EXPECT_TRUE(qrv::value(true).get<bool>());
    EXPECT_FALSE(qrv::value(false).get<bool>());
    EXPECT_EQ(qrv::value("two words").get<std::string>(), "two words");
    EXPECT_EQ(qrv::value(std::string("a\0b", 3)).get<std::string>(), std::string("a\0b", 3));
    EXPECT_EQ(qrv::value(0.1F).get<float>(), 0.1F);
    EXPECT_EQ(qrv::value(-0.0).get<double>(), 0.0);
    EXPECT_TRUE(std::signbit(qrv::value(-0.0).get<double>()));
    objref const object = make<cObjD<int>>(7);
    EXPECT_EQ(qrv::value(object).get<objref>(), object);
    EXPECT_EQ(qrv::value(object).get<qrv::value>().object(), object);
}

TEST_F(Value, is_read_as_any_integer_that_holds_it) {
    EXPECT_EQ(qrv::value(255).get<std::uint8_t>(), 255);
    EXPECT_EQ(thrown<std::out_of_range>([] { qrv::value(256).get<std::uint8_t>(); }),
              "256 does not fit: the range is 0 to 255");
    EXPECT_EQ(qrv::value(-128).get<std::int8_t>(), -128);
    EXPECT_EQ(thrown<std::out_of_range>([] { qrv::value(-129).get<std::int8_t>(); }),
              "-129 does not fit: the range is -128 to 127");
    EXPECT_EQ(qrv::value(0).get<unsigned>(), 0U);
    EXPECT_THROW(qrv::value(-1).get<unsigned>(), std::out_of_range);
    EXPECT_THROW(qrv::value(-1).get<std::uint64_t>(), std::out_of_range);
    EXPECT_EQ(qrv::value(greatest).get<std::int64_t>(), greatest);
}

TEST_F(Value, a_whole_number_is_read_as_an_integer) {
    EXPECT_EQ(qrv::value(3.0).get<int>(), 3);
    EXPECT_EQ(qrv::value(-0.0).get<int>(), 0);
    EXPECT_EQ(qrv::value(3.0F).get<int>(), 3);
    EXPECT_EQ(qrv::value(double{greatest}).get<int>(), greatest);
    EXPECT_EQ(qrv::value(double{lowest}).get<int>(), lowest);
    EXPECT_THROW(qrv::value(double{greatest} + 1).get<int>(), std::out_of_range);
    EXPECT_THROW(qrv::value(double{lowest} - 1).get<int>(), std::out_of_range);
    EXPECT_EQ(qrv::value(exact_end).get<std::int64_t>(), 9007199254740992);
    EXPECT_EQ(qrv::value(9223372036854774784.0).get<std::int64_t>(), 9223372036854774784);
    EXPECT_THROW(qrv::value(9223372036854775808.0).get<std::int64_t>(), std::out_of_range);
    EXPECT_EQ(qrv::value(-9223372036854775808.0).get<std::int64_t>(),
              std::numeric_limits<std::int64_t>::min());
    EXPECT_EQ(qrv::value(9223372036854775808.0).get<std::uint64_t>(), 9223372036854775808U);
    EXPECT_THROW(qrv::value(18446744073709551616.0).get<std::uint64_t>(), std::out_of_range);
}

TEST_F(Value, a_number_with_a_fraction_is_not_an_integer) {
    for (double const number : {1.5, -0.5, 1e-300, std::numeric_limits<double>::quiet_NaN(),
                                std::numeric_limits<double>::infinity()})
        EXPECT_THROW(qrv::value(number).get<int>(), qrv::type_error) << number;
    EXPECT_EQ(thrown<qrv::type_error>([] { qrv::value(1.5).get<int>(); }),
              "expected int, but it is a double: 1.50000");
}

TEST_F(Value, a_double_is_rounded_to_a_float) {
    EXPECT_EQ(qrv::value(0.5).get<float>(), 0.5F);
    EXPECT_EQ(read("0.1").get<float>(), 0.1F);
    EXPECT_EQ(read("{a= 0.1}").get_or("a", 1.5F), 0.1F);
    double const greatest_float = std::numeric_limits<float>::max();
    EXPECT_EQ(qrv::value(greatest_float).get<float>(), std::numeric_limits<float>::max());
    EXPECT_EQ(thrown<qrv::range_error>([] { qrv::value(1e300).get<float>(); }),
              "1.00000e+300 does not fit in a float");
    EXPECT_THROW(qrv::value(std::nextafter(greatest_float, 1e300)).get<float>(), std::out_of_range);
    EXPECT_THROW(qrv::value(-1e300).get<float>(), std::out_of_range);
    EXPECT_EQ(qrv::value(1e300).get_if<float>(), std::nullopt);
    EXPECT_EQ(thrown<qrv::range_error>([] {
                  qrv::value(qrv::map{{"a", 1e-300}}).get<float>("a");
              }),
              "a: 1.00000e-300 does not fit in a float");
    EXPECT_EQ(qrv::value(1e-45).get<float>(), std::numeric_limits<float>::denorm_min());
    EXPECT_TRUE(std::signbit(qrv::value(-0.0).get<float>()));
    EXPECT_TRUE(std::isnan(qrv::value(std::numeric_limits<double>::quiet_NaN()).get<float>()));
    EXPECT_TRUE(std::isinf(qrv::value(std::numeric_limits<double>::infinity()).get<float>()));
}

TEST_F(Value, an_int_is_read_as_a_float_that_holds_it_exactly) {
    EXPECT_EQ(qrv::value(16777216).get<float>(), 16777216.0F);
    EXPECT_EQ(thrown<qrv::type_error>([] { qrv::value(16777217).get<float>(); }),
              "expected float, but it is an int: 16777217");
}

TEST_F(Value, a_value_that_no_file_can_contain_is_printed_and_the_stream_stays_good) {
    double const infinity = std::numeric_limits<double>::infinity();
    for (qrv::value const &v : {qrv::value(infinity), qrv::value(qrv::vector{1, infinity})}) {
        std::ostringstream os;
        os << v;
        EXPECT_TRUE(os.good());
        EXPECT_NE(os.str().find("inf"), std::string::npos);
    }
    qrv::value ring = qrv::map{{"a", 1}};
    ASSERT_TRUE(ring.object()->setattr(own_key(std::string("self")), ring.object()));
    std::ostringstream os;
    os << ring;
    EXPECT_TRUE(os.good());
    EXPECT_NE(os.str().find("self= #cRef(/self)"), std::string::npos);
    dynamic_cast<cMapObj &>(*ring.object()).clear(); // a cycle is never freed
}

TEST_F(Value, is_read_as_a_double_from_any_number) {
    EXPECT_EQ(qrv::value(greatest).get<double>(), double{greatest});
    EXPECT_EQ(qrv::value(0.1F).get<double>(), double{0.1F});
    EXPECT_EQ(qrv::value(0.1).get<long double>(), static_cast<long double>(0.1));
}

TEST_F(Value, is_not_converted_between_kinds) {
    EXPECT_THROW(qrv::value(1).get<bool>(), qrv::type_error);
    EXPECT_THROW(qrv::value(true).get<int>(), qrv::type_error);
    EXPECT_THROW(qrv::value(true).get<double>(), qrv::type_error);
    EXPECT_THROW(qrv::value("1").get<int>(), qrv::type_error);
    EXPECT_THROW(qrv::value(1).get<std::string>(), qrv::type_error);
    EXPECT_THROW(qrv::value().get<int>(), qrv::type_error);
    EXPECT_THROW(read("[1]").get<int>(), qrv::type_error);
}

TEST_F(Value, returns_an_empty_optional_where_get_would_throw) {
    EXPECT_EQ(qrv::value(5).get_if<int>(), 5);
    EXPECT_EQ(qrv::value(5.5).get_if<int>(), std::nullopt);
    EXPECT_EQ(qrv::value(256).get_if<std::uint8_t>(), std::nullopt);
    EXPECT_EQ(qrv::value().get_if<std::string>(), std::nullopt);
    EXPECT_EQ(qrv::value("a").get_if<std::string>(), "a");
    EXPECT_TRUE(qrv::value().get_if<qrv::value>()->is_nil());
}

TEST_F(Value, get_returns_nothing_only_if_the_path_does_not_exist) {
    qrv::value const device = read("{bus= {baud= 9600; name= \"rack\"; none= #nil}}");
    EXPECT_EQ(device.get<int>("bus/baud"), 9600);
    EXPECT_EQ(device.get<int>("bus/speed"), std::nullopt);
    EXPECT_EQ(device.get<int>("nothing/speed"), std::nullopt);
    EXPECT_EQ(device.get<int>("bus/baud/below"), std::nullopt);
    EXPECT_EQ(device.get<int>("bus/none/below"), std::nullopt);
    EXPECT_THROW(device.get<int>("bus/none"), qrv::type_error);
    EXPECT_EQ(thrown<qrv::type_error>([&] { device.get<int>("bus/name"); }),
              "bus/name: expected int, but it is a string: \"rack\"");
    EXPECT_EQ(thrown<std::out_of_range>([&] { device.get<std::uint8_t>("bus/baud"); }),
              "bus/baud: 9600 does not fit: the range is 0 to 255");
    EXPECT_EQ(qrv::value().get<int>("a"), std::nullopt);
}

TEST_F(Value, get_or_returns_the_value_at_a_path_or_the_default) {
    qrv::value const device = read("{bus= {baud= 9600; name= \"rack\"}}");
    EXPECT_EQ(device.get_or("bus/baud", 0), 9600);
    EXPECT_EQ(device.get_or("bus/speed", 7), 7);
    EXPECT_EQ(device.get_or("bus/speed", 0.5), 0.5);
    EXPECT_EQ(device.get_or("bus/baud", 0.5), 9600.0);
    EXPECT_EQ(device.get_or("bus/name", "none"), "rack");
    EXPECT_EQ(device.get_or("bus/label", "none"), "none");
    static_assert(std::is_same_v<decltype(device.get_or("a", "b")), std::string>);
    static_assert(std::is_same_v<decltype(device.get_or("a", std::string_view("b"))), std::string>);
    static_assert(std::is_same_v<decltype(device.get_or("a", 1U)), unsigned>);
    EXPECT_THROW(device.get_or("bus/name", 0), qrv::type_error);
    EXPECT_EQ(device.get_or("none", qrv::value(3)), 3);
}

TEST_F(Value, the_value_at_a_path_shares_the_object) {
    qrv::value const device = read("{bus= {baud= 9600}}");
    EXPECT_TRUE(device.at("bus").is_shared_with(device.at("bus")));
    EXPECT_EQ(device.at("bus/baud"), 9600);
    EXPECT_EQ(device.at(""), device);
    EXPECT_EQ(device.find("bus/speed"), std::nullopt);
    EXPECT_EQ(device.find("bus")->size(), 1U);
    EXPECT_EQ(thrown<qrv::path_error>([&] { device.at("bus/speed"); }),
              "bus/speed: nothing is there");
}

TEST_F(Value, a_constant_map_has_entries_by_key) {
    qrv::value const map = read("{\"a/b\"= 1; c= 2; 3= 4; \"5\"= 6}");
    EXPECT_EQ(map["a/b"], 1);
    EXPECT_EQ(map["c"], 2);
    EXPECT_EQ(map[3], 4);
    EXPECT_EQ(map["5"], 6);
    EXPECT_EQ(map[5], 6); // the map has the key as a string only
    EXPECT_TRUE(map.contains("a/b"));
    EXPECT_FALSE(map.contains("a"));
    EXPECT_FALSE(map.contains("3")); // a string is not an int key
    EXPECT_TRUE(map.contains(3));
    EXPECT_EQ(thrown<qrv::path_error>([&] { map["a/c"]; }), "\"a/c\": nothing is there");
    EXPECT_EQ(thrown<qrv::path_error>([&] { map[7]; }), "7: nothing is there");
    EXPECT_THROW(map[std::int64_t{greatest} + 1], std::out_of_range);
}

TEST_F(Value, a_vector_has_values_by_position) {
    qrv::value const list = read("[10, 20]");
    EXPECT_EQ(list[0], 10);
    EXPECT_EQ(list.at(1), 20);
    EXPECT_EQ(list.find(2), std::nullopt);
    EXPECT_EQ(list.find(-1), std::nullopt);
    EXPECT_EQ(list.get<int>("1"), 20);
    EXPECT_FALSE(list.contains("1"));
    EXPECT_FALSE(list.contains("a"));
}

TEST_F(Value, has_a_size_unless_it_is_a_scalar) {
    EXPECT_EQ(read("{a= 1; b= 2}").size(), 2U);
    EXPECT_TRUE(read("[]").empty());
    EXPECT_EQ(qrv::value().size(), 0U);
    EXPECT_TRUE(qrv::value().empty());
    EXPECT_EQ(thrown<qrv::type_error>([] { qrv::value("text").size(); }),
              "expected a container, but it is a string: \"text\"");
    EXPECT_FALSE(qrv::value(1).contains("a"));
}

TEST_F(Value, copies_share_and_moved_from_is_nil) {
    qrv::value a = read("{x= 1}");
    qrv::value const b = a;
    EXPECT_TRUE(a.is_shared_with(b));
    a.set("x", 2);
    EXPECT_EQ(b.at("x"), 2);
    qrv::value const c = std::move(a);
    EXPECT_TRUE(a.is_nil());
    EXPECT_TRUE(b.is_shared_with(c));
    EXPECT_FALSE(qrv::value().is_shared_with(qrv::value()));
}

TEST_F(Value, assigned_to_itself_stays) {
    qrv::value a = 5;
    qrv::value const &same = a;
    a = same;
    EXPECT_EQ(a, 5);
}

TEST_F(Value, is_printed_as_text_that_reads_as_the_same_value) {
    EXPECT_EQ(text_of(qrv::value()), "#nil");
    EXPECT_EQ(text_of("two words"), "\"two words\"");
    EXPECT_EQ(text_of("name"), "name");
    EXPECT_EQ(text_of("true"), "\"true\"");
    EXPECT_EQ(text_of(0.1 + 0.2), "0.30000000000000004");
    EXPECT_EQ(text_of(read("[1, two]")), "[1, two, ]");
    EXPECT_EQ(text_of(std::numeric_limits<double>::infinity()), "inf");
}

// Literals: the conversion of numbers, strings, bools and constants from the text of a token.

#include "qrv/text/read/cattrscan.h"
#include "qrv/text/write/cwriter.h"
#include "tests/support/fixture.h"
#include "tests/text/read_support.h"

#include <bit>
#include <clocale>
#include <cmath>
#include <limits>
#include <locale>

namespace {

class ReadNumber : public QrvTest {};

// The written form of the value of a token, or "no".
std::string read(int token, char const *text) {
    objref value;
    return cat::read_stdtype(token, text, value) ? reader_test::written(value) : "no";
}

struct Case {
    char const *text;
    char const *expected;
};

void expect_all(int token, std::initializer_list<Case> cases) {
    for (Case const &c : cases) EXPECT_EQ(read(token, c.text), c.expected) << c.text;
}

double double_of(char const *text) {
    objref value;
    EXPECT_TRUE(cat::read_stdtype(tkDouble, text, value)) << text;
    auto const *const held = dynamic_cast<cObjDR<double> *>(value.get());
    return held ? held->val() : NAN;
}

float float_of(char const *text) {
    objref value;
    EXPECT_TRUE(cat::read_stdtype(tkFloat, text, value)) << text;
    auto const *const held = dynamic_cast<cObjDR<float> *>(value.get());
    return held ? held->val() : NAN;
}

TEST_F(ReadNumber, ints_are_decimal_even_after_a_zero) {
    expect_all(tkInt, {{"0", "0"},
                       {"7", "7"},
                       {"-7", "-7"},
                       {"+7", "7"},
                       {"0123", "123"},
                       {"09", "9"},
                       {"-0123", "-123"},
                       {"2147483647", "2147483647"},
                       {"2147483648", "no"},
                       {"-2147483648", "-2147483648"},
                       {"-2147483649", "no"},
                       {"99999999999999999999999", "no"},
                       {"", "no"},
                       {"-", "no"},
                       {"--1", "no"}});
}

TEST_F(ReadNumber, hexadecimal_ints_have_up_to_eight_significant_digits) {
    expect_all(tkInt, {{"0x1f", "31"},
                       {"0X1F", "31"},
                       {"0x7fffffff", "2147483647"},
                       {"0x80000000", "-2147483648"},
                       {"0xffffffff", "-1"},
                       {"0x00000000ffffffff", "-1"},
                       {"0x100000000", "no"},
                       {"0x", "no"},
                       {"0x-1", "no"}});
}

TEST_F(ReadNumber, a_zero_without_further_digits_is_zero) {
    expect_all(tkInt, {{"0", "0"}, {"0z", "0"}, {"0-5", "0"}, {"0+5", "0"}});
}

TEST_F(ReadNumber, the_bits_of_unsigned_numbers_are_stored_in_an_int) {
    expect_all(tkUnsigned, {{"0u", "0"},
                            {"5u", "5"},
                            {"5U", "5"},
                            {"2147483648u", "-2147483648"},
                            {"4294967295u", "-1"},
                            {"4294967296u", "no"},
                            {"-5u", "-5"},
                            {"-4294967295u", "1"},
                            {"-4294967296u", "no"},
                            {"u", "no"}});
}

TEST_F(ReadNumber, a_floating_number_that_is_too_large_fails_and_one_too_small_does_not) {
    EXPECT_EQ(read(tkDouble, "1.e308"), "1.00000e+308");
    EXPECT_EQ(read(tkDouble, "1.e309"), "no");
    EXPECT_EQ(read(tkDouble, "-1.8e308"), "no");
    EXPECT_EQ(read(tkDouble, "1.e99999999999999999999"), "no");
    EXPECT_EQ(double_of("1.e-400"), 0.0);
    EXPECT_EQ(double_of("0.e99999999999999999999"), 0.0);
    EXPECT_TRUE(std::signbit(double_of("-1.e-400")));
    EXPECT_EQ(double_of("1.e-99999999999999999999"), 0.0);
    EXPECT_EQ(double_of("4.9e-324"), std::numeric_limits<double>::denorm_min());
    EXPECT_EQ(read(tkFloat, "3.4e38f"), "3.40000e+38f");
    EXPECT_EQ(read(tkFloat, "3.5e38f"), "no");
    EXPECT_EQ(float_of("1.e-46f"), 0.0f);
    EXPECT_EQ(float_of("1.e-45f"), std::numeric_limits<float>::denorm_min());
    std::string const many = "0." + std::string(400, '0') + "1e401";
    EXPECT_EQ(double_of(many.c_str()), 1.0);
}

TEST_F(ReadNumber, floating_numbers_may_have_every_form_of_the_token_rules) {
    EXPECT_EQ(double_of(".5"), 0.5);
    EXPECT_EQ(double_of("+.5"), 0.5);
    EXPECT_EQ(double_of("-0.5"), -0.5);
    EXPECT_EQ(double_of("1."), 1.0);
    EXPECT_EQ(double_of("1.5e2"), 150.0);
    EXPECT_EQ(double_of("1.5E+2"), 150.0);
    EXPECT_EQ(double_of("15.e-1"), 1.5);
    EXPECT_EQ(float_of("0.1f"), 0.1f);
    EXPECT_EQ(float_of("0.1F"), 0.1f);
    expect_all(tkDouble, {{"inf", "no"}, {"nan", "no"}, {"", "no"}, {".", "no"}, {"-", "no"}});
}

TEST_F(ReadNumber, bools_strings_identifiers_and_constants_are_converted) {
    EXPECT_EQ(read(tkBool, "true"), "true");
    EXPECT_EQ(read(tkBool, "false"), "false");
    EXPECT_EQ(read(tkBool, "True"), "no");
    EXPECT_EQ(read(tkString, "\"a b\""), "\"a b\"");
    EXPECT_EQ(read(tkString, "'a b'"), "\"a b\"");
    EXPECT_EQ(read(tkString, "\"\""), "\"\"");
    objref text;
    EXPECT_TRUE(cat::read_stdtype(tkString, "'a\\'b\\\\c\\nd'", text));
    EXPECT_EQ(cat::as_string(text), "a'b\\cnd");
    EXPECT_EQ(read(tkIdent, "abc"), "abc");
    objref constant;
    EXPECT_TRUE(cat::read_stdtype(tkConst, "#nil", constant));
    EXPECT_EQ(constant, cat::nil());
    EXPECT_EQ(read(tkConst, "#nothing"), "no");
}

TEST_F(ReadNumber, other_tokens_fail_and_leave_the_result_unchanged) {
    objref value = cat::of(1);
    for (int token : {0, 40, 256, 265, 266, 267, 270, 271, 272, -28})
        EXPECT_FALSE(cat::read_stdtype(token, "5", value)) << token;
    EXPECT_FALSE(cat::read_stdtype(tkInt, nullptr, value));
    EXPECT_FALSE(cat::read_stdtype(tkInt, "x", value));
    EXPECT_EQ(reader_test::written(value), "1");
}

TEST_F(ReadNumber, each_token_determines_a_type) {
    objref value;
    struct {
        int token;
        char const *text;
        cTypeObj &type;
    } const cases[] = {{tkInt, "1", cat::type_int()},       {tkUnsigned, "1u", cat::type_int()},
                       {tkFloat, "1.f", cat::type_float()}, {tkDouble, "1.", cat::type_double()},
                       {tkBool, "true", cat::type_bool()},  {tkString, "'1'", cat::type_string()},
                       {tkIdent, "a", cat::type_string()}};
    for (auto const &c : cases) {
        ASSERT_TRUE(cat::read_stdtype(c.token, c.text, value));
        EXPECT_EQ(value->type().name(), c.type.name()) << c.text;
    }
}

// A locale with a decimal comma and grouping of digits.
struct cForeign : std::numpunct<char> {
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
};

TEST_F(ReadNumber, the_locale_does_not_change_numbers) {
    std::locale const before = std::locale::global(std::locale(std::locale(), new cForeign));
    char const *const c_before =
        std::setlocale(LC_ALL, "de_DE.UTF-8"); // the locale may not be installed
    EXPECT_EQ(
        reader_test::read_back("{a=1234567; b=1.5; c=1234.25f; d=int(1234567); e=double(1.5)}"),
        "{a= 1234567; b= 1.50000; c= 1234.25f; d= 1234567; e= 1.50000; }");
    if (c_before) std::setlocale(LC_ALL, "C");
    std::locale::global(before);
}

} // namespace

// Numbers at the start of a string: what each form accepts, and from where on a number is too large
// or too small.
#include "base/cnumber.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>
#include <vector>

namespace {

constexpr float infinite = std::numeric_limits<float>::infinity();

std::string zeros(int count) { return std::string(static_cast<std::size_t>(count), '0'); }

float real(std::string const &text) {
    float number = -1;
    EXPECT_TRUE(cat::scan_real(text, number)) << text;
    return number;
}

float token(std::string const &text) {
    float number = -1;
    EXPECT_TRUE(cat::parse_float(text, number)) << text;
    return number;
}

} // namespace

TEST(Number, a_real_may_be_hexadecimal_or_a_word) {
    EXPECT_EQ(real(" \t\v+0x1.8p1x"), 3.0F);
    EXPECT_EQ(real("-INFx"), -infinite);
    EXPECT_EQ(real("infinity"), infinite);
    EXPECT_TRUE(std::isnan(real("nano")));
}

TEST(Number, a_token_is_neither_hexadecimal_nor_a_word) {
    float number = 7;
    for (char const *text : {"inf", "nan", "x", "", "--1", "+-1", ".", ".e1"})
        EXPECT_FALSE(cat::parse_float(text, number)) << text;
    EXPECT_EQ(number, 7.0F);
    EXPECT_EQ(token("0x10"), 0.0F) << "the number ends before the x";
}

TEST(Number, a_word_must_be_complete) {
    float number = 7;
    for (char const *text : {"infi", "infinit", "in", "na", "0x", "0xg", "0x.p1", "-", ""})
        EXPECT_FALSE(cat::scan_real(text, number)) << text;
    EXPECT_EQ(number, 7.0F);
}

TEST(Number, a_too_large_real_is_infinite_and_a_too_large_token_is_refused) {
    float number = 7;
    for (std::string const &text :
         std::vector<std::string>{"1e39", "1" + zeros(39), "0.1e40", "9e99999999999999999999"}) {
        EXPECT_EQ(real(text), infinite) << text;
        EXPECT_EQ(real("-" + text), -infinite) << text;
        EXPECT_FALSE(cat::parse_float(text, number)) << text;
    }
    EXPECT_EQ(real("0x1p128"), infinite);
    EXPECT_EQ(real("0x" + zeros(3) + "1" + zeros(32)), infinite);
    EXPECT_EQ(number, 7.0F);
}

TEST(Number, a_too_small_number_is_zero_with_its_sign) {
    for (std::string const &text :
         std::vector<std::string>{"1e-60", "0." + zeros(60) + "1", "1" + zeros(39) + "e-120",
                                  "9e-99999999999999999999"}) {
        EXPECT_EQ(real(text), 0.0F) << text;
        EXPECT_EQ(token(text), 0.0F) << text;
        EXPECT_TRUE(std::signbit(token("-" + text))) << text;
    }
    EXPECT_EQ(real("0x1p-200"), 0.0F);
    EXPECT_EQ(real("0x0." + zeros(50) + "1"), 0.0F);
}

TEST(Number, an_exponent_letter_without_digits_is_not_part_of_the_number) {
    EXPECT_EQ(token("5e"), 5.0F);
    EXPECT_EQ(token("5e+x"), 5.0F);
    EXPECT_EQ(token("0." + zeros(60) + "1e"), 0.0F);
}

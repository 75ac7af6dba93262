// Literals in the style of those that they replace.

#include "edit/cspelling.h"

#include "qrv/core/cobjd.h"
#include "qrv/core/ctypes.h"
#include "tests/support/fixture.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

namespace {

using qrv::edit::spelt;

class Spelling : public QrvTest {
  protected:
    static void SetUpTestSuite() { cat::find_type("intf"); } // made when it is first named
};

objref read(std::string const &text) {
    objref value;
    cObj::readobj(text.c_str(), value);
    return value;
}

TEST_F(Spelling, strings_keep_their_quotes) {
    EXPECT_EQ(spelt(cat::of("a b"), "\"x\""), "\"a b\"");
    EXPECT_EQ(spelt(cat::of("ab"), "\"x\""), "\"ab\"");
    EXPECT_EQ(spelt(cat::of("a b"), "'x'"), "'a b'");
    EXPECT_EQ(spelt(cat::of("it's \"so\""), "'x'"), "'it\\'s \"so\"'");
    EXPECT_EQ(spelt(cat::of("it's \"so\""), "\"x\""), "\"it's \\\"so\\\"\"");
    EXPECT_EQ(spelt(cat::of("C:\\temp\n"), "\"x\""), "\"C:\\\\temp\\\n\"");
    EXPECT_EQ(spelt(cat::of(""), "word"), "\"\"");
}

TEST_F(Spelling, a_word_stays_a_word_where_it_reads_as_a_string) {
    EXPECT_EQ(spelt(cat::of("other"), "word"), "other");
    EXPECT_EQ(spelt(cat::of("two words"), "word"), "\"two words\"");
    EXPECT_EQ(spelt(cat::of("true"), "word"), "\"true\"");
    EXPECT_EQ(spelt(cat::of("1st"), "word"), "\"1st\"");
    EXPECT_EQ(spelt(cat::of("other"), ""), "other");
}

TEST_F(Spelling, a_string_that_replaces_another_value_has_double_quotes) {
    EXPECT_EQ(spelt(cat::of("word"), "12"), "\"word\"");
    EXPECT_EQ(spelt(cat::of("word"), "#nil"), "\"word\"");
}

TEST_F(Spelling, whole_numbers_keep_base_width_sign_and_suffix) {
    EXPECT_EQ(spelt(cat::of(255), "0x0a1F"), "0x00FF");
    EXPECT_EQ(spelt(cat::of(255), "0X1"), "0Xff");
    EXPECT_EQ(spelt(cat::of(0x12345), "0x1F"), "0x12345");
    EXPECT_EQ(spelt(cat::of(-1), "0x1F"), "-1");
    EXPECT_EQ(spelt(cat::of(7), "+5"), "+7");
    EXPECT_EQ(spelt(cat::of(-7), "+5"), "-7");
    EXPECT_EQ(spelt(cat::of(7), "-5"), "7");
    EXPECT_EQ(spelt(cat::of(12), "007"), "012");
    EXPECT_EQ(spelt(cat::of(1234), "007"), "1234");
    EXPECT_EQ(spelt(cat::of(-3), "007"), "-003");
    EXPECT_EQ(spelt(cat::of(10), "0"), "10");
    EXPECT_EQ(spelt(cat::of(6), "5u"), "6u");
    EXPECT_EQ(spelt(cat::of(-6), "5U"), "-6");
    EXPECT_EQ(spelt(cat::of(std::numeric_limits<int>::min()), "1"), "-2147483648");
    EXPECT_EQ(spelt(cat::of(std::numeric_limits<int>::max()), "0x1"), "0x7fffffff");
    EXPECT_EQ(spelt(cat::of(12), "word"), "12");
}

TEST_F(Spelling, floating_numbers_keep_their_digits_after_the_point) {
    EXPECT_EQ(spelt(cat::of(12.5), "400.0"), "12.5");
    EXPECT_EQ(spelt(cat::of(12.0), "400.0"), "12.0");
    EXPECT_EQ(spelt(cat::of(12.25), "400.0"), "12.25");
    EXPECT_EQ(spelt(cat::of(12.0), "400.000"), "12.000");
    EXPECT_EQ(spelt(cat::of(12.0), "400."), "12.");
    EXPECT_EQ(spelt(cat::of(-12.0), "400."), "-12.0");
    EXPECT_EQ(spelt(cat::of(0.25), ".5"), ".25");
    EXPECT_EQ(spelt(cat::of(-0.25), ".5"), "-0.25");
    EXPECT_EQ(spelt(cat::of(0.0), ".5"), ".0");
    EXPECT_EQ(spelt(cat::of(2.0), "+1.5"), "+2.0");
    EXPECT_EQ(spelt(cat::of(2.0), "+1."), "+2.0");
    EXPECT_EQ(spelt(cat::of(0.1), "1.0"), "0.1");
}

TEST_F(Spelling, an_exponent_is_used_as_before_or_if_the_size_needs_one) {
    EXPECT_EQ(spelt(cat::of(2.5e-7), "1.0e-5"), "2.5e-07");
    EXPECT_EQ(spelt(cat::of(3.0), "1.50E5"), "3.00E+00");
    EXPECT_EQ(spelt(cat::of(1e300), "1.0"), "1.00000e+300");
    EXPECT_EQ(spelt(cat::of(1e-300), "1.0"), "1.00000e-300");
}

TEST_F(Spelling, floats_keep_their_suffix) {
    EXPECT_EQ(spelt(cat::of(0.1f), "0.50f"), "0.10f");
    EXPECT_EQ(spelt(cat::of(0.1f), "0.50F"), "0.10F");
    EXPECT_EQ(spelt(cat::of(0.5f), "0.25"), "0.50f");
    EXPECT_EQ(spelt(cat::of(0.5), "0.25f"), "0.50");
}

TEST_F(Spelling, constants_and_typed_values_have_their_exact_form) {
    EXPECT_EQ(spelt(cat::nil(), "12"), "#nil");
    EXPECT_EQ(spelt(cat::btrue(), "12"), "#true");
    EXPECT_EQ(spelt(cat::of(true), "false"), "true");
    EXPECT_EQ(spelt(read("intf(0x1f)"), "12"), "intf(0x1f)");
    EXPECT_EQ(spelt(read("[1, {a=2}]"), ""), "[1, {a= 2; }, ]");
}

TEST_F(Spelling, a_number_without_a_written_form_has_no_literal) {
    EXPECT_EQ(spelt(cat::of(std::numeric_limits<double>::infinity()), "1.0"), "");
}

TEST_F(Spelling, each_value_in_each_style_reads_as_itself) {
    char const *const literals[] = {"",     "0",    "-5",   "+5",   "007",       "0x1F",
                                    "0X0a", "5u",   "1.",   "1.5",  ".5",        "-2.5e-3",
                                    "+1.5", "1.0f", ".5F",  "1.e5", "\"\"",      "'a b'",
                                    "word", "true", "#nil", "1E5",  "-1.25e+10f"};
    std::mt19937 random(7);
    std::vector<objref> values;
    for (int i = 0; i < 300; ++i) {
        double const mantissa = static_cast<double>(static_cast<int>(random())) / 1000;
        int const exponent = static_cast<int>(random() % 60) - 30;
        values.push_back(cat::of(std::ldexp(mantissa, exponent)));
        values.push_back(cat::of(static_cast<float>(std::ldexp(mantissa, exponent))));
        values.push_back(cat::of(static_cast<int>(random()) >> (random() % 32)));
        std::string text;
        for (auto n = random() % 6; n > 0; --n) text += "ab\"'\\\n 1_/*"[random() % 11];
        values.push_back(cat::of(text));
    }
    for (double const edge :
         {0.0, -0.0, 1e15, 1e-6, 999999999999999.9, 5e-324, 1.7976931348623157e308})
        values.push_back(cat::of(edge));
    for (objref const &value : values)
        for (char const *const like : literals) {
            std::string const text = spelt(value, like);
            objref const back = read(text);
            ASSERT_TRUE(back) << text;
            ASSERT_EQ(&back->type(), &value->type()) << text << " like " << like;
            ASSERT_EQ(spelt(back, ""), spelt(value, "")) << text << " like " << like;
        }
}

} // namespace

// Floating-point numbers with a notation: reading, compared with sscanf in the C locale, and
// writing.
#include "qrv/util/cfloatformat.h"

#include "tests/text/hostile_locale.h"

#include <gtest/gtest.h>

#include <bit>
#include <cctype>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <random>
#include <string>
#include <type_traits>

namespace {

using Format = cFormatFloating::Format;
constexpr Format Fixed = cFormatFloating::ffFixed, General = cFormatFloating::ffGeneral,
                 Scientific = cFormatFloating::ffScientific;
constexpr float infinite = std::numeric_limits<float>::infinity();
constexpr float untouched = 4711.25F;

struct cResult {
    bool done;
    float number;
    bool operator==(cResult const &other) const {
        bool const both_nan = std::isnan(number) && std::isnan(other.number);
        return done == other.done && std::signbit(number) == std::signbit(other.number) &&
               (both_nan || number == other.number);
    }
};

void PrintTo(cResult const &result, std::ostream *os) {
    *os << result.done << ' ' << result.number;
}

cResult set(char const *text, Format format = Fixed) {
    float number = untouched;
    bool const done = cFloatFormat(number, format, 6).set_str(text);
    return {done, number};
}

cResult good(float number) { return {true, number}; }
cResult const refused{false, untouched};

std::string text_of(float number, Format format, short precision) {
    return cFloatFormat(number, format, precision).str();
}

std::string text_of(double number, Format format, short precision) {
    return cDoubleFormat(number, format, precision).str();
}

// --- the views ---

static_assert(sizeof(cFormatFloating) == 8 && sizeof(cFloatFormat) == 16 &&
              sizeof(cDoubleFormat) == 16);
static_assert(!std::is_polymorphic_v<cFloatFormat> && !std::is_polymorphic_v<cDoubleFormat>);
static_assert(!std::is_constructible_v<cFloatFormat, float, Format, short> &&
              !std::is_constructible_v<cDoubleFormat, double, Format, short>);
static_assert(Fixed == 0 && General == 1 && Scientific == 2);

template <class T> struct cView;
template <> struct cView<float> { using type = cFloatFormat; };
template <> struct cView<double> { using type = cDoubleFormat; };

template <class T> class FloatFormats : public ::testing::Test {
  protected:
    using View = typename cView<T>::type;
};
using cNumbers = ::testing::Types<float, double>;
TYPED_TEST_SUITE(FloatFormats, cNumbers);

TYPED_TEST(FloatFormats, is_a_view_on_the_number) {
    TypeParam number = 1;
    typename TestFixture::View view(number, General, 3);
    EXPECT_EQ(view.format(), General);
    EXPECT_EQ(view.precision(), 3);
    number = 2;
    EXPECT_EQ(view.value(), 2);
    view.set_value(4);
    EXPECT_EQ(number, 4);
    view.set_format(Fixed);
    view.set_precision(1);
    EXPECT_EQ(view.str(), "4.0");
}

TYPED_TEST(FloatFormats, a_copy_is_a_view_on_the_same_number) {
    TypeParam number = 1;
    typename TestFixture::View const view(number, General, 3);
    typename TestFixture::View copy(view);
    EXPECT_EQ(copy.format(), General);
    EXPECT_EQ(copy.precision(), 3);
    copy.set_value(2);
    EXPECT_EQ(number, 2);
}

TYPED_TEST(FloatFormats, assigning_writes_number_format_and_precision) {
    TypeParam a = 1, b = 2;
    typename TestFixture::View to(a, Fixed, 1);
    typename TestFixture::View const from(b, Scientific, 2);
    to = from;
    EXPECT_EQ(a, 2);
    EXPECT_EQ(to.str(), "2.00e+00");
    b = 3;
    EXPECT_EQ(to.value(), 2);
}

TYPED_TEST(FloatFormats, a_number_is_read_in_each_format) {
    for (Format const format : {Fixed, General, Scientific}) {
        TypeParam number = 0;
        typename TestFixture::View view(number, format, 6);
        EXPECT_TRUE(view.set_str(" -1.25e2 and more"));
        EXPECT_EQ(number, -125);
        EXPECT_FALSE(view.set_str("x"));
        EXPECT_FALSE(view.set_str(""));
        EXPECT_FALSE(view.set_str(nullptr));
        EXPECT_EQ(number, -125);
    }
}

TYPED_TEST(FloatFormats, an_unknown_format_writes_fixed_and_reads_nothing) {
    for (int const unknown : {-1, 3, 99}) {
        TypeParam number = 1.5;
        typename TestFixture::View view(number, static_cast<Format>(unknown), 2);
        EXPECT_EQ(view.str(), "1.50");
        EXPECT_FALSE(view.set_str("2"));
        bool changed = true;
        EXPECT_FALSE(view.set_str("2", changed));
        EXPECT_FALSE(changed);
        EXPECT_EQ(number, 1.5);
    }
}

TYPED_TEST(FloatFormats, changed_reports_a_different_number) {
    TypeParam number = 1.5;
    typename TestFixture::View view(number, Fixed, 2);
    bool changed = false;
    EXPECT_TRUE(view.set_str("2.5", changed));
    EXPECT_TRUE(changed);
    EXPECT_TRUE(view.set_str("25e-1", changed));
    EXPECT_FALSE(changed);
    changed = true;
    EXPECT_FALSE(view.set_str("?", changed));
    EXPECT_FALSE(changed);
    changed = true;
    EXPECT_FALSE(view.set_str(nullptr, changed));
    EXPECT_FALSE(changed);
    EXPECT_TRUE(view.set_str("0", changed));
    EXPECT_TRUE(view.set_str("-0", changed));
    EXPECT_FALSE(changed);
    EXPECT_TRUE(std::signbit(number));
    EXPECT_TRUE(view.set_str("nan", changed));
    EXPECT_TRUE(changed);
    EXPECT_TRUE(view.set_str("nan", changed));
    EXPECT_TRUE(changed);
}

// --- reading ---

TEST(FloatFormat, decimal_numbers_are_read) {
    EXPECT_EQ(set("0"), good(0));
    EXPECT_EQ(set("-0"), good(-0.0F));
    EXPECT_EQ(set("12"), good(12));
    EXPECT_EQ(set("+12."), good(12));
    EXPECT_EQ(set(".5"), good(.5F));
    EXPECT_EQ(set("-.5e1"), good(-5));
    EXPECT_EQ(set("1E+2"), good(100));
    EXPECT_EQ(set("1e-2"), good(.01F));
    EXPECT_EQ(set("16777217"), good(16777216));
    EXPECT_EQ(set("0.1"), good(.1F));
    EXPECT_EQ(set((std::string(10'000, '0') + "1.5").c_str()), good(1.5F));
}

TEST(FloatFormat, leading_white_space_is_skipped) {
    EXPECT_EQ(set(" \t\n\v\f\r1.5"), good(1.5F));
    EXPECT_EQ(set("- 1"), refused);
}

TEST(FloatFormat, text_after_the_number_is_ignored) {
    EXPECT_EQ(set("1.5.5"), good(1.5F));
    EXPECT_EQ(set("1,5"), good(1));
    EXPECT_EQ(set("1e"), good(1));
    EXPECT_EQ(set("1e+"), good(1));
    EXPECT_EQ(set("1ex"), good(1));
    EXPECT_EQ(set("1f"), good(1));
    EXPECT_EQ(set("12 13"), good(12));
}

TEST(FloatFormat, text_that_is_not_a_number_is_refused) {
    for (char const *text : {"",    " ",  "+",   "-",   ".",    "-.", ".e1", "e1", "x",  "--1",
                             "+-1", "0x", "0x.", "0xg", "0xp1", "in", "na",  "i",  "#1", "\xff"})
        EXPECT_EQ(set(text), refused) << text;
}

TEST(FloatFormat, hexadecimal_numbers_are_read) {
    EXPECT_EQ(set("0x10"), good(16));
    EXPECT_EQ(set("0X1.8p1"), good(3));
    EXPECT_EQ(set("-0x.8P+2"), good(-2));
    EXPECT_EQ(set("0xAp-1"), good(5));
    EXPECT_EQ(set("0x1p"), good(1));
    EXPECT_EQ(set("0x1.fffffep127"), good(std::numeric_limits<float>::max()));
    EXPECT_EQ(set("0x1p-149"), good(std::numeric_limits<float>::denorm_min()));
}

TEST(FloatFormat, infinity_and_nan_are_read_in_any_case) {
    for (char const *text : {"inf", "INF", "+Infinity", "infinityx"})
        EXPECT_EQ(set(text), good(infinite)) << text;
    EXPECT_EQ(set("-iNf"), good(-infinite));
    for (char const *text : {"infi", "infinit", "-infinitx"}) EXPECT_EQ(set(text), refused) << text;
    for (char const *text : {"nan", "NAN", "nan(1)", "nanx"})
        EXPECT_EQ(set(text), good(std::numeric_limits<float>::quiet_NaN())) << text;
}

TEST(FloatFormat, a_too_large_number_is_infinite) {
    EXPECT_EQ(set("3.4028235e38"), good(std::numeric_limits<float>::max()));
    EXPECT_EQ(set("3.4028236e38"), good(infinite));
    EXPECT_EQ(set("1e39"), good(infinite));
    EXPECT_EQ(set("-1e99999999999999999999"), good(-infinite));
    EXPECT_EQ(set(("1" + std::string(50, '0')).c_str()), good(infinite));
    EXPECT_EQ(set(("0." + std::string(50, '0') + "1e100").c_str()), good(infinite));
    EXPECT_EQ(set("0x1p128"), good(infinite));
    EXPECT_EQ(set("-0x1p99999999999999999999"), good(-infinite));
}

TEST(FloatFormat, a_too_small_number_is_zero) {
    EXPECT_EQ(set("1e-45"), good(std::numeric_limits<float>::denorm_min()));
    EXPECT_EQ(set("1e-46"), good(0));
    EXPECT_EQ(set("-1e-46"), good(-0.0F));
    EXPECT_EQ(set("1e-99999999999999999999"), good(0));
    EXPECT_EQ(set("0e99999999999999999999"), good(0));
    EXPECT_EQ(set("0.0e99"), good(0));
    EXPECT_EQ(set(("1" + std::string(50, '0') + "e-100").c_str()), good(0));
    EXPECT_EQ(set("0x1p-151"), good(0));
    EXPECT_EQ(set("0x0p99999999999"), good(0));
}

// "0x" with a point but without a digit is not a number, though some C libraries read it as 0.
bool is_hollow(std::string const &text) {
    size_t const at = text.find_first_not_of(" +-");
    return at != std::string::npos &&
           (text.substr(at, 3) == "0x." || text.substr(at, 3) == "0X.") &&
           (text.size() == at + 3 || !std::isxdigit(static_cast<unsigned char>(text[at + 3])));
}

// The reference is the C library in its own locale.
TEST(FloatFormat, reads_the_numbers_that_sscanf_reads) {
    std::mt19937 random(99);
    std::string const often = "0123456789..eE+-xXpPaf ";
    unsigned taken = 0;
    for (int i = 0; i < 100'000; ++i) {
        std::string text;
        for (auto n = 1 + random() % 12; n > 0; --n) text += often[random() % often.size()];
        if (is_hollow(text)) continue;
        float number = untouched;
        bool const done = std::sscanf(text.c_str(), "%f", &number) == 1;
        EXPECT_EQ(set(text.c_str()), (cResult{done, done ? number : untouched})) << text;
        taken += done;
    }
    EXPECT_GT(taken, 10'000U);
}

TEST(FloatFormat, reads_the_words_that_sscanf_reads) {
    for (std::string const word : {"inf", "infi", "infinity", "INFINITYX", "info", "nan", "nAn(",
                                   "na", "nano", "inFx", "0xinf", "i", "infin"})
        for (std::string const sign : {"", "+", "-", " "}) {
            float number = untouched;
            bool const done = std::sscanf((sign + word).c_str(), "%f", &number) == 1;
            EXPECT_EQ(set((sign + word).c_str()), (cResult{done, number})) << sign << word;
        }
}

TEST(FloatFormat, reads_each_float_that_it_writes) {
    std::mt19937 random(5);
    for (int i = 0; i < 20'000; ++i) {
        auto const number = std::bit_cast<float>(static_cast<std::uint32_t>(random()));
        for (Format const format : {General, Scientific}) {
            std::string const text = text_of(number, format, 9);
            EXPECT_EQ(set(text.c_str(), format), good(number)) << text;
        }
    }
}

TEST(FloatFormat, a_double_from_text_has_single_precision) {
    double number = 0;
    cDoubleFormat view(number, Fixed, 3);
    EXPECT_TRUE(view.set_str("0.1"));
    EXPECT_EQ(number, static_cast<double>(0.1F));
    EXPECT_NE(number, 0.1);
    EXPECT_TRUE(view.set_str("1e39"));
    EXPECT_EQ(number, std::numeric_limits<double>::infinity());
    EXPECT_TRUE(view.set_str("1e-46"));
    EXPECT_EQ(number, 0);
}

TEST(FloatFormat, a_double_is_compared_as_a_double) {
    double number = 0.1;
    cDoubleFormat view(number, Fixed, 3);
    bool changed = false;
    EXPECT_TRUE(view.set_str("0.1", changed));
    EXPECT_TRUE(changed);
    EXPECT_TRUE(view.set_str("0.1", changed));
    EXPECT_FALSE(changed);
}

// --- writing ---

TEST(FloatFormat, fixed_notation_is_written) {
    EXPECT_EQ(text_of(1.5, Fixed, 0), "2.");
    EXPECT_EQ(text_of(1.5, Fixed, 1), "1.5");
    EXPECT_EQ(text_of(-1234567.0, Fixed, 2), "-1234567.00");
    EXPECT_EQ(text_of(0.1F, Fixed, 10), "0.1000000015");
    EXPECT_EQ(text_of(1e20, Fixed, 0), "100000000000000000000.");
}

TEST(FloatFormat, general_notation_is_not_hexadecimal) {
    EXPECT_EQ(text_of(1.5, General, 4), "1.500");
    EXPECT_EQ(text_of(1.5F, General, 4), "1.500");
    EXPECT_EQ(text_of(1e10, General, 4), "1.000e+10");
    EXPECT_EQ(text_of(0.0, General, 3), "0.00");
    EXPECT_EQ(text_of(5.0, General, 0), "5.");
}

TEST(FloatFormat, scientific_notation_is_written) {
    EXPECT_EQ(text_of(1500.0, Scientific, 2), "1.50e+03");
    EXPECT_EQ(text_of(-1.5F, Scientific, 0), "-2.e+00");
}

TEST(FloatFormat, a_negative_precision_means_six) {
    EXPECT_EQ(text_of(1.5, Fixed, -1), "1.500000");
    EXPECT_EQ(text_of(1.5, Scientific, std::numeric_limits<short>::min()), "1.500000e+00");
}

TEST(FloatFormat, the_largest_precision_writes_that_many_digits) {
    std::string const text = text_of(1.5, Fixed, std::numeric_limits<short>::max());
    EXPECT_EQ(text, "1.5" + std::string(32766, '0'));
}

TEST(FloatFormat, infinity_and_nan_are_written_as_words) {
    EXPECT_EQ(text_of(infinite, Fixed, 2), "inf");
    EXPECT_EQ(text_of(-infinite, General, 2), "-inf");
    EXPECT_EQ(text_of(std::numeric_limits<double>::quiet_NaN(), Scientific, 2), "nan");
}

TEST(FloatFormat, the_locale_has_no_effect) {
    test::cHostileLocale const hostile;
    EXPECT_EQ(text_of(1234567.5, Fixed, 1), "1234567.5");
    EXPECT_EQ(text_of(1234567.5, General, 8), "1234567.5");
    EXPECT_EQ(text_of(1234.5F, Scientific, 2), "1.23e+03");
    EXPECT_EQ(set("1234.5"), good(1234.5F));
    EXPECT_EQ(set("1,5"), good(1));
    EXPECT_EQ(set("1.234.567"), good(1.234F));
}

TEST(FloatFormatEdge, assigning_the_same_number_is_not_a_change) {
    float single = 1.5F;
    double dbl = 1.5;
    bool changed = true;
    EXPECT_TRUE(cFloatFormat(single, Fixed, 2).set_str("1.5", changed));
    EXPECT_FALSE(changed);
    changed = true;
    EXPECT_TRUE(cDoubleFormat(dbl, Fixed, 2).set_str("1.5", changed));
    EXPECT_FALSE(changed);
}

} // namespace

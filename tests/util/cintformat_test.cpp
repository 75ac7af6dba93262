// Ints with a format: each branch of reading, its limits in pairs, and writing.
#include "qrv/util/cintformat.h"

#include "tests/text/hostile_locale.h"

#include <gtest/gtest.h>

#include <bit>
#include <cstdint>
#include <limits>
#include <random>
#include <string>
#include <type_traits>
#include <vector>

namespace {

using Format = cIntFormat::Format;
constexpr Format Dec = cIntFormat::fmtDec, Hex = cIntFormat::fmtHex, HEX = cIntFormat::fmtHEX,
                 Oct = cIntFormat::fmtOct, Bin8 = cIntFormat::fmtBin8, Bin16 = cIntFormat::fmtBin16,
                 Bin32 = cIntFormat::fmtBin32;
constexpr int lowest = std::numeric_limits<int>::min();
constexpr int highest = std::numeric_limits<int>::max();
constexpr int untouched = 4711;

struct cResult {
    bool done;
    int number;
    Format format;
    bool operator==(cResult const &) const = default;
};

void PrintTo(cResult const &result, std::ostream *os) {
    *os << result.done << ' ' << result.number << " format " << result.format;
}

// The result of reading a string into a view whose number is `untouched` and whose format is
// `before`.
cResult set(char const *text, Format before = Bin16) {
    int number = untouched;
    cIntFormat view(number, before);
    bool const done = view.set_str(text);
    return {done, number, view.format()};
}

cResult good(int number, Format format) { return {true, number, format}; }
cResult refused(Format format = Bin16) { return {false, untouched, format}; }

std::string text_of(int number, Format format) { return cIntFormat(number, format).str(); }

// --- the view ---

static_assert(sizeof(cIntFormat) == 16 && std::is_standard_layout_v<cIntFormat>);
static_assert(std::is_nothrow_copy_constructible_v<cIntFormat> &&
              std::is_nothrow_copy_assignable_v<cIntFormat>);
static_assert(!std::is_constructible_v<cIntFormat, int, Format>); // would dangle
static_assert(Dec == 0 && Hex == 1 && HEX == 2 && Oct == 3 && Bin8 == 4 && Bin16 == 5 &&
              Bin32 == 6);

TEST(IntFormat, is_a_pointer_and_a_format) {
    struct cLayout {
        int *value;
        int format;
        int padding;
    };
    int number = 5;
    alignas(cIntFormat) unsigned char memory[sizeof(cIntFormat)]{};
    cIntFormat const *const view = new (memory) cIntFormat(number, Oct);
    EXPECT_EQ(view->value(), 5);
    cLayout layout{};
    std::copy(std::begin(memory), std::end(memory), reinterpret_cast<unsigned char *>(&layout));
    EXPECT_EQ(layout.value, &number);
    EXPECT_EQ(layout.format, 3);
}

TEST(IntFormat, is_a_view_on_the_number) {
    int number = 5;
    cIntFormat view(number, Dec);
    number = 7;
    EXPECT_EQ(view.value(), 7);
    view.set_value(9);
    EXPECT_EQ(number, 9);
    view.set_format(HEX);
    EXPECT_EQ(view.format(), HEX);
}

TEST(IntFormat, a_copy_is_a_view_on_the_same_number) {
    int number = 5;
    cIntFormat const view(number, Hex);
    cIntFormat copy(view);
    EXPECT_EQ(copy.format(), Hex);
    copy.set_value(6);
    copy.set_format(Dec);
    EXPECT_EQ(number, 6);
    EXPECT_EQ(view.format(), Hex);
}

TEST(IntFormat, assigning_writes_the_number_and_keeps_the_pointer) {
    int a = 1, b = 2;
    cIntFormat to(a, Dec);
    cIntFormat const from(b, Oct);
    to = from;
    EXPECT_EQ(a, 2);
    EXPECT_EQ(to.format(), Oct);
    b = 3;
    EXPECT_EQ(to.value(), 2);
    cIntFormat &self = to;
    to = self;
    EXPECT_EQ(a, 2);
}

TEST(IntFormat, is_equal_if_number_and_format_are_equal) {
    int a = 1, b = 1, c = 2;
    cIntFormat const view(a, Hex);
    EXPECT_TRUE(view == cIntFormat(b, Hex));
    EXPECT_FALSE(view != cIntFormat(b, Hex));
    EXPECT_FALSE(view == cIntFormat(b, HEX));
    EXPECT_TRUE(view != cIntFormat(b, HEX));
    EXPECT_FALSE(view == cIntFormat(c, Hex));
    EXPECT_TRUE(view != cIntFormat(c, Hex));
}

// --- str ---

TEST(IntFormat, writes_each_format) {
    EXPECT_EQ(text_of(43981, Dec), "43981");
    EXPECT_EQ(text_of(43981, Hex), "0xabcd");
    EXPECT_EQ(text_of(43981, HEX), "0xABCD");
    EXPECT_EQ(text_of(8, Oct), "010");
    EXPECT_EQ(text_of(5, Bin8), "b 0000 0101");
    EXPECT_EQ(text_of(43981, Bin16), "b 1010 1011 1100 1101");
    EXPECT_EQ(text_of(43981, Bin32), "b 0000 0000 0000 0000 1010 1011 1100 1101");
}

TEST(IntFormat, writes_zero) {
    EXPECT_EQ(text_of(0, Dec), "0");
    EXPECT_EQ(text_of(0, Hex), "0x0");
    EXPECT_EQ(text_of(0, HEX), "0x0");
    EXPECT_EQ(text_of(0, Bin8), "b 0000 0000");
}

TEST(IntFormat, writes_the_bits_of_negative_numbers_except_in_decimal) {
    EXPECT_EQ(text_of(-1, Dec), "-1");
    EXPECT_EQ(text_of(lowest, Dec), "-2147483648");
    EXPECT_EQ(text_of(highest, Dec), "2147483647");
    EXPECT_EQ(text_of(lowest, Hex), "0x80000000");
    EXPECT_EQ(text_of(-1, HEX), "0xFFFFFFFF");
    EXPECT_EQ(text_of(-1, Oct), "037777777777");
    EXPECT_EQ(text_of(-2, Bin8), "b 1111 1110");
    EXPECT_EQ(text_of(-2, Bin32), "b 1111 1111 1111 1111 1111 1111 1111 1110");
}

TEST(IntFormat, a_binary_format_shows_the_lowest_bits) {
    EXPECT_EQ(text_of(255, Bin8), "b 1111 1111");
    EXPECT_EQ(text_of(256, Bin8), "b 0000 0000");
    EXPECT_EQ(text_of(65535, Bin16), "b 1111 1111 1111 1111");
    EXPECT_EQ(text_of(65537, Bin16), "b 0000 0000 0000 0001");
}

TEST(IntFormat, an_unknown_format_writes_decimal) {
    EXPECT_EQ(text_of(16, static_cast<Format>(-1)), "16");
    EXPECT_EQ(text_of(16, static_cast<Format>(7)), "16");
    EXPECT_EQ(text_of(-16, static_cast<Format>(lowest)), "-16");
}

// --- set_str ---

TEST(IntFormat, an_empty_string_is_refused) {
    for (char const *text : {"", " ", "\t\r\n  ", static_cast<char const *>(nullptr)})
        EXPECT_EQ(set(text), refused());
}

TEST(IntFormat, surrounding_white_space_is_ignored) {
    EXPECT_EQ(set("  12"), good(12, Dec));
    EXPECT_EQ(set("12\n"), good(12, Dec));
    EXPECT_EQ(set("\t\r\n 0x1F \t"), good(31, HEX));
    EXPECT_EQ(set(" b1 "), good(1, Bin8));
}

TEST(IntFormat, white_space_inside_is_allowed_only_between_bits) {
    for (char const *text : {"1 2", "- 5", "0x 1", "0x1 2", "0 x1", "01 2", "1\t2"})
        EXPECT_EQ(set(text), refused()) << text;
    EXPECT_EQ(set("b\t1\n 0\r\n1"), good(5, Bin8));
}

TEST(IntFormat, bits_are_read) {
    EXPECT_EQ(set("b1"), good(1, Bin8));
    EXPECT_EQ(set("B1"), good(1, Bin8));
    EXPECT_EQ(set("b0"), good(0, Bin8));
    EXPECT_EQ(set("b 0000 0101"), good(5, Bin8));
    for (char const *text : {"b ", "b12", "b1x", "b-1", "bb1", "b0x1", "b.", "b1\x80"})
        EXPECT_EQ(set(text), refused()) << text;
}

TEST(IntFormat, the_number_of_bits_determines_the_width) {
    auto const ones = [](size_t count) { return "b" + std::string(count, '1'); };
    auto const zeros = [](size_t count) { return "b" + std::string(count, '0'); };
    EXPECT_EQ(set(ones(8).c_str()), good(255, Bin8));
    EXPECT_EQ(set(ones(9).c_str()), good(511, Bin16));
    EXPECT_EQ(set(ones(16).c_str()), good(65535, Bin16));
    EXPECT_EQ(set(ones(17).c_str()), good(131071, Bin32));
    EXPECT_EQ(set(ones(31).c_str()), good(highest, Bin32));
    EXPECT_EQ(set(ones(32).c_str()), good(-1, Bin32));
    EXPECT_EQ(set(ones(33).c_str()), refused());
    EXPECT_EQ(set(zeros(8).c_str()), good(0, Bin8));
    EXPECT_EQ(set(zeros(9).c_str()), good(0, Bin16));
    EXPECT_EQ(set(zeros(17).c_str()), good(0, Bin32));
    EXPECT_EQ(set(zeros(33).c_str()), refused());
    EXPECT_EQ(set(("b1" + std::string(31, '0')).c_str()), good(lowest, Bin32));
    EXPECT_EQ(set(ones(100'000).c_str()), refused());
}

TEST(IntFormat, the_majority_of_letters_determines_the_hexadecimal_case) {
    for (Format const before : {Dec, Hex, HEX, Oct, Bin8}) {
        EXPECT_EQ(set("0xff", before), good(255, Hex));
        EXPECT_EQ(set("0xFF", before), good(255, HEX));
        EXPECT_EQ(set("0xabC", before), good(0xabc, Hex));
        EXPECT_EQ(set("0xaBC", before), good(0xabc, HEX));
    }
}

TEST(IntFormat, without_a_majority_lower_case_is_kept_and_other_formats_become_upper_case) {
    for (char const *text : {"0xaB", "0xBa", "0x10", "0x0", "0xA1b2"}) {
        EXPECT_EQ(set(text, Hex).format, Hex) << text;
        for (Format const before : {Dec, HEX, Oct, Bin8, Bin16, Bin32, static_cast<Format>(9)})
            EXPECT_EQ(set(text, before).format, HEX) << text;
        EXPECT_TRUE(set(text).done);
    }
}

TEST(IntFormat, hexadecimal_digits_are_read) {
    EXPECT_EQ(set("0x0123abcd"), good(0x0123abcd, Hex));
    EXPECT_EQ(set("0x456789EF"), good(0x456789ef, HEX));
    EXPECT_EQ(set("0x7fffffff"), good(highest, Hex));
    EXPECT_EQ(set("0x80000000"), good(lowest, HEX));
    EXPECT_EQ(set("0xffffffff"), good(-1, Hex));
    EXPECT_EQ(set("0x00000001"), good(1, HEX));
    EXPECT_EQ(set("0x000000001"), refused());
    for (char const *text : {"0xg", "0xG", "0x1g", "0x@", "0x`", "0xZZ", "0x1.0", "0x-1", "0x+1",
                             "0xx1", "0x:", "0x/"})
        EXPECT_EQ(set(text), refused()) << text;
}

TEST(IntFormat, a_sign_or_prefix_without_digits_fails_but_changes_the_format) {
    EXPECT_EQ(set("0x"), refused(HEX));
    EXPECT_EQ(set("0x", Hex), refused(Hex));
    EXPECT_EQ(set("+"), refused(Dec));
    EXPECT_EQ(set("-"), refused(Dec));
    EXPECT_EQ(set(" - "), refused(Dec));
}

TEST(IntFormat, octal_digits_are_read) {
    EXPECT_EQ(set("00"), good(0, Oct));
    EXPECT_EQ(set("07"), good(7, Oct));
    EXPECT_EQ(set("0755"), good(493, Oct));
    EXPECT_EQ(set("017777777777"), good(highest, Oct));
    EXPECT_EQ(set("020000000000"), good(lowest, Oct));
    EXPECT_EQ(set("037777777777"), good(-1, Oct));
    EXPECT_EQ(set("040000000001"), good(1, Oct));
    EXPECT_EQ(set("00000000000000000000000000010"), good(8, Oct));
    for (char const *text : {"08", "018", "01a", "0.", "0b1", "0-1", "0/", "0 0"})
        EXPECT_EQ(set(text), refused()) << text;
}

TEST(IntFormat, decimal_digits_are_read) {
    EXPECT_EQ(set("9"), good(9, Dec));
    EXPECT_EQ(set("1234567890"), good(1234567890, Dec));
    EXPECT_EQ(set("2147483647"), good(highest, Dec));
    EXPECT_EQ(set("-2147483648"), good(lowest, Dec));
    EXPECT_EQ(set("+0"), good(0, Dec));
    EXPECT_EQ(set("-0"), good(0, Dec));
    for (char const *text : {"x", "1x", "1.5", "1e3", "--1", "+-1", "1-", "a", "f", "/", ":", "#1",
                             "1,000", "\xc2\xb2", "\x80", "x10"})
        EXPECT_EQ(set(text), refused()) << text;
}

TEST(IntFormat, decimal_numbers_of_any_length_are_read_modulo_32_bits) {
    EXPECT_EQ(set("2147483648"), good(lowest, Dec));
    EXPECT_EQ(set("4294967295"), good(-1, Dec));
    EXPECT_EQ(set("4294967296"), good(0, Dec));
    EXPECT_EQ(set("4294967297"), good(1, Dec));
    EXPECT_EQ(set("-2147483649"), good(highest, Dec));
    EXPECT_EQ(set("-4294967296"), good(0, Dec));
    EXPECT_EQ(set("18446744073709551616"), good(0, Dec));
    EXPECT_EQ(set("18446744073709551621"), good(5, Dec));
    EXPECT_EQ(set("-18446744073709551621"), good(-5, Dec));
    EXPECT_EQ(set(("1" + std::string(99'999, '0')).c_str()), good(0, Dec));
}

TEST(IntFormat, a_zero_after_a_sign_makes_the_digits_octal) {
    EXPECT_EQ(set("+010"), good(8, Dec));
    EXPECT_EQ(set("-010"), good(-8, Dec));
    EXPECT_EQ(set("-09"), good(0, Dec));
    EXPECT_EQ(set("+0179"), good(15, Dec));
}

TEST(IntFormat, reading_twice_gives_the_same_result) {
    int number = 0;
    cIntFormat view(number, Dec);
    for (int i = 0; i < 2; ++i) {
        EXPECT_TRUE(view.set_str("0x1f"));
        EXPECT_EQ(view.str(), "0x1f");
        EXPECT_FALSE(view.set_str("0xZZ"));
        EXPECT_EQ(view.str(), "0x1f");
    }
}

// A written number is read back as the number that the string shows, and is written the same again.
TEST(IntFormat, a_written_number_can_be_read_again) {
    std::mt19937 random(20240117);
    for (int i = 0; i < 20'000; ++i) {
        int const wide = static_cast<int>(random() >> random() % 32);
        auto const format = static_cast<Format>(random() % 7);
        int const shown = format == Bin8 ? wide & 0xFF : format == Bin16 ? wide & 0xFFFF : wide;
        std::string const text = text_of(wide, format);
        int read = 0;
        cIntFormat view(read, Dec);
        ASSERT_TRUE(view.set_str(text.c_str())) << text;
        EXPECT_EQ(read, shown) << text;
        EXPECT_EQ(view.str(), text);
        if (format == Hex && text.find_first_of("abcdef", 2) == std::string::npos)
            EXPECT_EQ(view.format(), HEX) << text; // no letter determines the case
        else
            EXPECT_EQ(view.format(), format) << text;
    }
}

// Any bytes: either they are refused and the number is unchanged, or the number that is read is
// written and read again.
TEST(IntFormat, any_string_is_read_or_leaves_the_number_unchanged) {
    std::mt19937 random(7);
    std::string const often = "01 01 01bBxX89afAF+-\t\n";
    unsigned taken = 0;
    for (int i = 0; i < 200'000; ++i) {
        std::string text;
        for (auto n = random() % 14; n > 0; --n)
            text += random() % 20 ? often[random() % often.size()] : static_cast<char>(random());
        cResult const result = set(text.c_str(), Bin16);
        if (!result.done) {
            EXPECT_EQ(result.number, untouched) << text;
            continue;
        }
        ++taken;
        std::string const written = text_of(result.number, result.format);
        EXPECT_EQ(set(written.c_str(), result.format), result) << text << " gave " << written;
    }
    EXPECT_GT(taken, 1000U);
}

TEST(IntFormat, the_locale_has_no_effect) {
    test::cHostileLocale const hostile;
    EXPECT_EQ(text_of(1234567, Dec), "1234567");
    EXPECT_EQ(text_of(0x1234567, Hex), "0x1234567");
    EXPECT_EQ(text_of(01234567, Oct), "01234567");
    EXPECT_EQ(set("1234567"), good(1234567, Dec));
    EXPECT_EQ(set("1.234"), refused());
    EXPECT_EQ(set("\xa0"
                  "5"),
              refused());
}

// --- edge cases ---

TEST(IntFormatEdge, a_single_zero_is_decimal_and_a_leading_zero_means_octal) {
    EXPECT_EQ(set("0"), good(0, Dec));
    EXPECT_EQ(set("010"), good(8, Oct));
    EXPECT_EQ(set("09"), refused());
}

TEST(IntFormatEdge, a_capital_x_is_refused) { EXPECT_EQ(set("0X10"), refused()); }

TEST(IntFormatEdge, bits_may_be_separated_and_there_must_be_1_to_32) {
    EXPECT_EQ(set("b1010"), good(10, Bin8));
    EXPECT_EQ(set("b 1 0 1"), good(5, Bin8));
    EXPECT_EQ(set("b"), refused());
    EXPECT_EQ(set(("b" + std::string(33, '0')).c_str()), refused());
}

TEST(IntFormatEdge, a_sign_means_decimal_and_is_refused_before_a_prefix) {
    EXPECT_EQ(set("+12"), good(12, Dec));
    EXPECT_EQ(set("-12"), good(-12, Dec));
    EXPECT_EQ(set("+0x10"), refused());
}

TEST(IntFormatEdge, nine_hexadecimal_digits_are_refused) {
    EXPECT_EQ(set("0x123456789"), refused());
    EXPECT_EQ(set("0x12345678"), good(0x12345678, HEX));
}

TEST(IntFormatEdge, zero_in_octal_has_two_digits) { EXPECT_EQ(text_of(0, Oct), "00"); }

TEST(IntFormatEdge, a_negative_number_in_hexadecimal_shows_its_bits_and_can_be_read_again) {
    EXPECT_EQ(text_of(-1, Hex), "0xffffffff");
    EXPECT_EQ(set("0xffffffff"), good(-1, Hex));
}

} // namespace

// The writer: strings, numbers, bools, constants, and write methods called with wrong arguments.
#include "tests/text/write_support.h"

#include "qrv/base/platform/cstack.h"
#include "text/state/ctext_state.h"
#include "text/write/cscalar_text.h"

#include <clocale>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <random>

using namespace test;

namespace {

class Writer : public QrvTest {};

std::string escaped(std::string text) {
    bool const bare = cat::escape(text);
    return (bare ? "bare " : "quoted ") + text;
}
std::string unescaped(std::string text, int removed) {
    EXPECT_EQ(cat::unescape(text), removed) << text;
    return text;
}
std::string text_of(char const *text) { return cat::as_text(cat::of(text)); }

} // namespace

// --- strings ---

TEST_F(Writer, an_identifier_consists_of_letters_digits_and_underscores) {
    for (char const *yes : {"a", "_", "A9", "_9", "zZ_09"}) EXPECT_TRUE(cat::is_ident(yes)) << yes;
    for (char const *no : {"", "9", "9a", "a b", "a-b", " a", "a\n", "\xE4", "a\xE4", "#a"})
        EXPECT_FALSE(cat::is_ident(no)) << no;
    EXPECT_FALSE(cat::is_ident(std::string("a\0b", 3)));
}

TEST_F(Writer, escape_does_not_change_identifiers_and_the_empty_string) {
    EXPECT_EQ(escaped("fast"), "bare fast");
    EXPECT_EQ(escaped(""), "quoted ");
    EXPECT_EQ(escaped("true"), "bare true");
}

TEST_F(Writer, escape_puts_a_backslash_before_quotes_and_backslashes_only) {
    EXPECT_EQ(escaped("a b"), "quoted a b");
    EXPECT_EQ(escaped("a\"b'c\\d"), "quoted a\\\"b\\'c\\\\d");
    EXPECT_EQ(escaped("tab\tline\nend"), "quoted tab\tline\nend");
    EXPECT_EQ(escaped("\""), "quoted \\\"");
}

TEST_F(Writer, unescape_removes_backslashes_before_any_character) {
    EXPECT_EQ(unescaped("plain", 0), "plain");
    EXPECT_EQ(unescaped("\\\\", 1), "\\");
    EXPECT_EQ(unescaped("\\\"", 1), "\"");
    EXPECT_EQ(unescaped("\\n", 1), "n");
    EXPECT_EQ(unescaped("a\\", 1), "a");
    EXPECT_EQ(unescaped("\\\\\\", 2), "\\");
    EXPECT_EQ(unescaped("", 0), "");
}

TEST_F(Writer, unescape_undoes_escape) {
    std::mt19937 random(7);
    std::string const letters = "ab\"'\\ \n1";
    for (int round = 0; round < 1000; ++round) {
        std::string text;
        for (auto n = random() % 12; n; --n) text += letters[random() % letters.size()];
        std::string copy = text;
        cat::escape(copy);
        cat::unescape(copy);
        EXPECT_EQ(copy, text);
    }
}

TEST_F(Writer, the_strings_true_and_false_are_written_without_quotes) {
    EXPECT_EQ(text_of("true"), "true");
    EXPECT_EQ(text_of("false"), "false");
}

// --- numbers ---

TEST_F(Writer, plain_numbers_are_written_with_six_digits) {
    EXPECT_EQ(cat::as_text(cat::of(0)), "0");
    EXPECT_EQ(cat::as_text(cat::of(std::numeric_limits<int>::min())), "-2147483648");
    EXPECT_EQ(cat::as_text(cat::of(1.5)), "1.50000");
    EXPECT_EQ(cat::as_text(cat::of(100.0)), "100.000");
    EXPECT_EQ(cat::as_text(cat::of(1.5f)), "1.50000f");
    EXPECT_EQ(cat::as_text(cat::of(0.25f)), "0.250000f");
    EXPECT_EQ(cat::as_text(cat::of(-123456.0)), "-123456.");
    EXPECT_EQ(cat::as_text(cat::of(999999.5)), "1.00000e+06");
    EXPECT_EQ(cat::as_text(cat::of(0.0001)), "0.000100000");
    EXPECT_EQ(cat::as_text(cat::of(0.00001)), "1.00000e-05");
    EXPECT_EQ(cat::as_text(cat::of(-0.0)), "-0.00000");
}

namespace {

// Six digits, with showpoint: "%#.6g", composed from the two forms between which it chooses. (Some
// C libraries drop the zeros where rounding carries: 999999.5 becomes "1.e+06".)
std::string six_digits(double value) {
    char text[400];
    std::snprintf(text, sizeof text, "%.5e", value);
    if (!std::isfinite(value)) return text;
    int const exponent = std::atoi(std::strchr(text, 'e') + 1);
    if (exponent < -4 || exponent >= 6) return text;
    std::snprintf(text, sizeof text, "%#.*f", 5 - exponent, value);
    return text;
}

void expect_six_digits(double value) {
    std::string text;
    append_number(text, value);
    EXPECT_EQ(text, six_digits(value));
    char whole[64];
    std::snprintf(whole, sizeof whole, "%#.6g", value);
    if (!std::strstr(whole, ".e")) {
        EXPECT_EQ(text, whole);
    }
    std::ostringstream os;
    os.imbue(std::locale::classic());
    cat::of(value)->write(os);
    EXPECT_EQ(os.str(), text);
}

} // namespace

TEST_F(Writer, numbers_with_and_without_a_stream_have_six_digits) {
    std::mt19937_64 random(1);
    for (int i = 0; i < 100'000; ++i) {
        std::uint64_t const bits = random();
        double value = 0;
        std::memcpy(&value, &bits, sizeof value);
        expect_six_digits(value);
    }
    for (int i = 0; i < 100'000; ++i)
        expect_six_digits(std::ldexp(static_cast<double>(random() % 2'000'001) - 1e6,
                                     -static_cast<int>(random() % 40)));
    using limits = std::numeric_limits<double>;
    for (double value :
         {0.0, -0.0, 1e5, 999999.0, 999999.5, 99999.95, 999999.4999, 1e-4, 9.9999995e-5,
          limits::max(), limits::min(), limits::denorm_min(), limits::infinity(),
          -limits::infinity(), limits::quiet_NaN(), -limits::quiet_NaN()})
        expect_six_digits(value);
}

TEST_F(Writer, numbers_on_a_stream_use_its_flags_and_preserve_them) {
    std::ostringstream os;
    os.imbue(std::locale::classic());
    os << std::hex << std::showbase;
    cat::of(255)->write(os);
    EXPECT_EQ(os.str(), "0xff");
    os.str("");
    os.precision(3);
    auto const flags = os.flags();
    cat::of(1.5)->write(os);
    cat::of(2.25f)->write(os);
    EXPECT_EQ(os.str(), "1.502.25f");
    EXPECT_EQ(os.flags(), flags);
    os.str("");
    os << std::unitbuf << std::scientific;
    auto const more_flags = os.flags();
    cat::of(2.25f)->write(os);
    EXPECT_EQ(os.str(), "2.250e+00f");
    EXPECT_EQ(os.flags(), more_flags);
}

TEST_F(Writer, bools_and_the_two_constants_are_written) {
    EXPECT_EQ(cat::as_text(cat::of(true)), "true");
    EXPECT_EQ(cat::as_text(cat::of(false)), "false");
    EXPECT_EQ(cat::as_text(cat::btrue()), "#true");
    EXPECT_EQ(cat::as_text(cat::bfalse()), "#false");
    std::ostringstream os;
    EXPECT_TRUE(cat::btrue()->write(os));
    EXPECT_EQ(os.str(), "#true");
    os.setstate(std::ios_base::badbit);
    EXPECT_FALSE(cat::of(true)->write(os));
    EXPECT_TRUE(cat::of(1)->write(os));
}

TEST_F(Writer, write_methods_refuse_arguments_without_a_stream) {
    objref no_stream = cat::of(1), null;
    for (objref const &value : {cat::of(1), cat::of(1.0), cat::of(1.0f), cat::of(true),
                                cat::of("a"), new_map(), new_vector(), new_set()}) {
        auto const exe = value->type().tmember("write");
        auto const &method = static_cast<cExeObj &>(*exe);
        EXPECT_FALSE(method.pexecute(*value, no_stream)) << value->type().name();
        EXPECT_FALSE(method.pexecute(*value, null)) << value->type().name();
    }
    objref const thing = objref::adopt(new cObj);
    EXPECT_FALSE(cat::write_voiddata(*thing, no_stream));
}

TEST_F(Writer, a_method_called_on_an_object_of_another_kind_is_false) {
    std::ostringstream os;
    objref holder = objref::adopt(new cOutHolder(os));
    holder->obid(0);
    objref const text = cat::of("text"), number = cat::of(5);
    EXPECT_FALSE(cat::write_int(*text, holder));
    EXPECT_FALSE(cat::write_float(*text, holder));
    EXPECT_FALSE(cat::write_double(*text, holder));
    EXPECT_FALSE(cat::write_bool(*text, holder));
    EXPECT_FALSE(cat::write_string(*number, holder));
    EXPECT_FALSE(cTomMap::m_write(*number, holder));
    EXPECT_FALSE(cTomMap::m_write0(*number, holder));
    EXPECT_EQ(os.str(), "");
}

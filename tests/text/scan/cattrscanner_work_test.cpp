// Counts how often the matcher compares a character, in builds that count it.

#include "tests/support/fixture.h"
#include "tests/text/scan_support.h"

#include "qrv/text/file/creadtext.h"
#include "qrv/text/read/creadreport.h"
#include "text/scan/cattrscanner_rules.h"

#include <gtest/gtest.h>

#ifdef QRV_CHECKS
namespace {
// The number of comparisons until the end of the text.
unsigned long long compared_in(std::string const &text) {
    std::istringstream in(text);
    test::Scan scan(in);
    scan.return_com(true);
    scan::compared = 0;
    while (scan.gettoken() != tkEof) continue;
    return scan::compared;
}

std::vector<std::string> const parts{"\"", "'", "\\", "/", "*", "//", "/*", "*/", "{", "<",
                                     "#",  "(", "1",  ".", "e", "+",  "a",  " ",  "\n"};

class ReaderWork : public QrvTest {};
} // namespace

TEST(ScannerWork, compares_each_character_at_most_2_2_times_on_average) {
    std::string text = "{\n";
    for (int i = 0; i < 1000; ++i)
        text += "      key" + std::to_string(i) + "= " + std::to_string(i * 77) + ";\n" +
                "    list= [1, 22, -333, ];\n    word= true;\n    text= \"some words\";\n" +
                "    real= -0.0625;\n";
    text += "}\n";
    unsigned long long const compared = compared_in(text);
    EXPECT_GE(compared, text.size());
    EXPECT_LE(static_cast<double>(compared), 2.2 * static_cast<double>(text.size()));
}

// Each opening quote makes the scanner read the rest of the line before it is known to be unclosed.
TEST(ScannerWork, many_unclosed_quotes_in_a_line_take_linear_time) {
    for (std::string const piece : {"\\\"", "\\'", "\"\\", "\\\"\\'", "\\\" a= 1; "}) {
        std::string text;
        while (text.size() < 100000) text += piece;
        EXPECT_LE(compared_in(text + '\n'), 20 * text.size()) << piece;
        EXPECT_LE(compared_in('{' + text + "\n}\n" + text), 20 * text.size()) << piece;
    }
}

TEST(ScannerWork, no_repeated_piece_takes_more_than_linear_time) {
    std::string worst;
    double most = 0;
    for (std::string const &first : parts)
        for (std::string const &second : parts)
            for (std::string const &third : parts)
                for (std::string const end : {"", "\n", "\"\n\"", "\n*/"}) {
                    std::string text;
                    while (text.size() < 600) text += first + second + third;
                    text += end;
                    double const work =
                        static_cast<double>(compared_in(text)) / static_cast<double>(text.size());
                    if (work <= most) continue;
                    most = work;
                    worst = first + second + third + " and " + end;
                }
    EXPECT_LE(most, 10) << worst;
}

// The reader looks for the end of a typed value before it reads it, also after unclosed quotes.
TEST_F(ReaderWork, typed_values_after_unclosed_quotes_take_linear_time) {
    auto const compared = [](std::string const &piece, std::size_t size) {
        std::string text = "{";
        while (text.size() < size) text += piece;
        cat::ReadReport report;
        objref value;
        scan::compared = 0;
        EXPECT_FALSE(cat::read_text(text + "*/", value, report));
        return scan::compared;
    };
    for (std::string const piece : {"\"string(\\", "'string(\\", "\"\\ string("})
        EXPECT_LT(compared(piece, 40000), 5 * compared(piece, 10000)) << piece;
}
#endif

// Generated invalid text: each reported position is in the text.

#include "tests/support/fixture.h"
#include "tests/support/types.h"
#include "tests/text/read_support.h"

#include <array>
#include <random>

using reader_test::are_runs;
using reader_test::misplaced;
using reader_test::Reading;

namespace {

class ReadReportPlaces : public QrvTest {
  protected:
    static void SetUpTestSuite() { cat::find_type("intf"); } // the type is created on first use
};

cat::ReadError error_at(unsigned line, unsigned column, unsigned end_line, unsigned end_column) {
    cat::ReadError error;
    error.line = line;
    error.column = column;
    error.end_line = end_line;
    error.end_column = end_column;
    return error;
}

bool is_misplaced(cat::ReadError const &error, std::string const &text) {
    cat::ReadReport report;
    report.keep(error);
    return !misplaced(report, text).empty();
}

// Pieces of text. Most leave something open, missing or unknown, with line ends between and inside
// them.
std::string broken_text(std::mt19937 &random) {
    static constexpr std::array pieces = {
        "\n",        "\n   ",     "\r\n",        " ",        "/* c */",     "/* a\n b */",
        "// c\n",    "/*",        "= ",          "= ",       "; ",          ";\n",
        ", ",        ";;;",       "{",           "}",        "[",           "]",
        "<",         ">",         ")",           ")\n",      "T(",          "T(\n",
        "T(x=",      "T{x= ",     "C(",          "C(\na",    "int(",        "string<",
        "intf(",     "choice(",   "choice({\n",  "attlist(", "T= attlist(", "attspec(",
        "type= int", "default= ", "x",           "y= ",      "a",           "b= ",
        "1",         "2.5",       "99999999999", "12ab",     "\"s\\\n\"",   "'q\n",
        "'",         "#nil",      "#bad",        "#none",    "#cRef(",      "#cRef(/a)",
        "nosuch(",   "?",         "\xE4",        "\xC3\xA4", "+=",          "<<",
        "true",      "\t",        "a= T(x="};
    std::string text = random() % 4 ? "{T= attlist(x= attspec(type= int; flag= #IMPLIED));"
                                      " C= choice({a= 1; b= 2}); "
                                    : "";
    for (auto n = random() % 24 + 1; n; --n) text += pieces[random() % pieces.size()];
    return text;
}

TEST_F(ReadReportPlaces, the_check_knows_the_bounds_of_text) {
    std::string const text = "ab\n\nc\n";
    for (auto const &[line, column] : {std::pair(1u, 3u), {2u, 1u}, {3u, 2u}, {4u, 1u}, {1u, 1u}})
        EXPECT_FALSE(is_misplaced(error_at(line, column, 0, 0), text)) << line << ':' << column;
    for (auto const &[line, column] :
         {std::pair(1u, 4u), {2u, 2u}, {3u, 3u}, {4u, 2u}, {5u, 1u}, {0u, 1u}, {1u, 0u}})
        EXPECT_TRUE(is_misplaced(error_at(line, column, 0, 0), text)) << line << ':' << column;
    EXPECT_FALSE(is_misplaced(error_at(1, 1, 4, 1), text));
    EXPECT_TRUE(is_misplaced(error_at(1, 1, 4, 2), text));
    EXPECT_TRUE(is_misplaced(error_at(3, 1, 1, 1), text));
    EXPECT_TRUE(is_misplaced(error_at(1, 1, 1, 1), text));
    EXPECT_TRUE(is_misplaced(error_at(1, 2, 0, 0), ""));
}

TEST_F(ReadReportPlaces, are_in_the_text) {
    std::mt19937 random(10);
    size_t errors = 0, followers = 0, sub_texts = 0;
    for (int i = 0; i < 6000; ++i) {
        std::string const text = broken_text(random);
        cTypesBack const types;
        cat::ReadReport report;
        {
            Reading r(text, false);
            r.scan.return_com(i % 2 == 0);
            while (r.next() != -1) continue;
        }
        ASSERT_EQ(misplaced(report, text), "") << text;
        ASSERT_TRUE(are_runs(report)) << text;
        for (cat::ReadError const &error : report.entries())
            followers += error.follows != cat::ReadError::none;
        errors += report.entries().size();
        sub_texts += text.find("T(") != std::string::npos;
    }
    EXPECT_GT(errors, 30000u);
    EXPECT_GT(followers, errors / 4);
    EXPECT_LT(followers, errors * 3 / 4);
    EXPECT_GT(sub_texts, 1000u);
    text_state().forget_comments();
    messages();
}

} // namespace

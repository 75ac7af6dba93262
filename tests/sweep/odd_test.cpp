// All edits of a file with everything that is rare in files: tabs, several entries on a line,
// repeated keys, comments at unusual positions, empty containers, a last entry without a delimiter.

#include "tests/support/fixture.h"
#include "tests/support/paths.h"
#include "tests/sweep/by_document.h"
#include "tests/sweep/sweep.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>

namespace {

using namespace sweep_test;

class Odd : public testing::Test {
  protected:
    static void SetUpTestSuite() { ASSERT_TRUE(test::listening()); }

    static std::string text() {
        std::ifstream is(test::source_file("tests/sweep/data/odd.attr"), std::ios::binary);
        return {std::istreambuf_iterator<char>(is), std::istreambuf_iterator<char>()};
    }
    // The complaints of the sweep about all edits of the text.
    static std::string complaints(std::string const &text, cTool const &tool = run) {
        std::string all;
        cTable const table =
            sweep(text, 1, tool, [&](std::string const &what) { all += what + '\n'; });
        for (cRow const &row : table) EXPECT_GT(row.edits, 0u);
        return all;
    }
    static std::string replaced(std::string text, std::string const &from, std::string const &to) {
        for (size_t at = 0; (at = text.find(from, at)) != text.npos; at += to.size())
            text.replace(at, from.size(), to);
        return text;
    }
};

TEST_F(Odd, edits_change_only_their_lines) { EXPECT_EQ(complaints(text()), ""); }

TEST_F(Odd, documents_change_the_same_lines) { EXPECT_EQ(complaints(text(), run_by_document), ""); }

// A string that continues on the next line cannot have CRLF there.
TEST_F(Odd, line_ends_may_differ) {
    std::string all = replaced(text(), "\\\n", "");
    all = replaced(all, "\n", "\r\n");
    EXPECT_EQ(complaints(all.replace(all.find("\r\n"), 2, "\n")), "");
}

TEST_F(Odd, entries_may_be_on_one_line) {
    EXPECT_EQ(complaints("{a=1;b={c=2;d=[1,{e=3},<4,5>]};f=#cRef(/b/d/1/e);g=[[],{},<>];h=#nil}"),
              "");
    EXPECT_EQ(complaints("{ a = 1, b = [ 1 , 2 ] , c = { x = 1 ; } , }"), "");
}

TEST_F(Odd, lines_may_be_empty) {
    EXPECT_EQ(complaints("{\n\na = 1;\n\n\nb = { x = 1;\n\n y = 2; };\n// c\n\nc = [1]; }"), "");
}

} // namespace

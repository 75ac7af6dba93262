// The extraction of text up to the closing bracket: its end, which text is copied, and positions.

#include "tests/text/scan_support.h"

#include "text/scan/cenclosed_text.h"
#include "text/scan/cmemory_stream.h"

#include <gtest/gtest.h>

namespace {

// A string in memory that begins after an opening bracket, and its scanner.
struct cMemory {
    explicit cMemory(std::string_view after) : in(after), scan(in) {}
    int read() { return scan.read_enclosed('(', ')', enclosed); }
    cMemoryStream in;
    test::Scan scan;
    cEnclosedText enclosed;
};

std::string read_from_string(std::string const &after) {
    std::istringstream in(after);
    test::Scan const scan(in);
    cEnclosedText enclosed;
    int const end = scan.read_enclosed('(', ')', enclosed);
    return std::to_string(end) + " " + std::string(enclosed.text);
}

} // namespace

TEST(EnclosedText, is_a_view_of_a_string_in_memory) {
    std::string const text = "a = (1, \")\"); \n b) rest";
    cMemory m(text);
    EXPECT_EQ(m.read(), ')');
    EXPECT_EQ(m.enclosed.text, "a = (1, \")\"); \n b");
    EXPECT_EQ(m.enclosed.text.data(), text.data());
    EXPECT_EQ(m.scan.token().code, ')');
    EXPECT_EQ(test::place(m.scan.token()), "2:2:16");
    EXPECT_EQ(m.scan.gettoken(), tkIdent);
}

TEST(EnclosedText, is_a_view_even_after_other_tokens_were_read) {
    std::string const text = "T(x y)";
    cMemory m(text);
    m.scan.gettoken();
    m.scan.gettoken();
    EXPECT_EQ(m.read(), ')');
    EXPECT_EQ(m.enclosed.text.data(), text.data() + 2);
    EXPECT_EQ(m.enclosed.text, "x y");
}

TEST(EnclosedText, is_a_copy_without_comments) {
    cMemory m("a /* ) */ b // )\n c)");
    EXPECT_EQ(m.read(), ')');
    EXPECT_EQ(m.enclosed.text, "a b\n c");
    EXPECT_EQ(m.enclosed.text.data(), m.enclosed.copy.data());
}

TEST(EnclosedText, is_a_copy_of_a_stream) {
    EXPECT_EQ(read_from_string("a (b) ')' c)d"), "41 a (b) ')' c");
    EXPECT_EQ(read_from_string("a /* ) */ b) c"), "41 a b");
}

TEST(EnclosedText, ends_with_the_input_and_contains_the_text_before) {
    cMemory m("a (b) c");
    EXPECT_EQ(m.read(), 0);
    EXPECT_EQ(m.enclosed.text, "a (b) c");
    cMemory open("a /* b)");
    EXPECT_EQ(open.read(), 0);
    EXPECT_EQ(open.enclosed.text, "a");
    cMemory byte("a \xe4 b)");
    EXPECT_EQ(byte.read(), 0);
    EXPECT_EQ(byte.enclosed.text, "a ");
}

TEST(EnclosedText, begins_with_tokens_that_were_pushed_back) {
    cMemory m("a b) c");
    m.scan.gettoken();
    m.scan.ungettoken();
    EXPECT_EQ(m.read(), ')');
    EXPECT_EQ(m.enclosed.text, "a b");
}

TEST(EnclosedText, does_not_change_the_flags) {
    cMemory m("a) b");
    m.scan.return_com(true);
    m.read();
    EXPECT_TRUE(m.scan.return_com());
    EXPECT_FALSE(m.scan.return_ws());
}

TEST(EnclosedText, records_where_lines_and_omitted_text_shift_positions) {
    cMemory m("a /* x */ b\n  c)");
    m.enclosed.with_places = true;
    m.read();
    ASSERT_EQ(m.enclosed.text, "a b\n  c");
    std::string places;
    for (cAttrPlace const &p : m.enclosed.places)
        places += std::to_string(p.offset) + ":" + std::to_string(p.line) + ":" +
                  std::to_string(p.column) + " ";
    EXPECT_EQ(places, "0:1:0 1:1:9 6:2:2 ");
}

// All texts of five characters of the alphabet.
TEST(EnclosedText, is_equal_from_memory_and_from_a_stream) {
    std::string const alphabet = "ab(1) \n\"/*";
    std::size_t const n = alphabet.size();
    for (std::size_t i = 0; i < n * n * n * n * n; ++i) {
        std::string text;
        for (std::size_t k = i, d = 0; d < 5; ++d, k /= n) text += alphabet[k % n];
        cMemory m(text);
        int const end = m.read();
        ASSERT_EQ(std::to_string(end) + " " + std::string(m.enclosed.text), read_from_string(text))
            << testing::PrintToString(text);
    }
}

// Hostile text: too deep, too long, or junk. It is read to its end, with errors and without a
// crash, and reader and writer are idle afterwards.

#include "qrv/containers/cmapobj.h"
#include "tests/support/fixture.h"
#include "tests/support/strings.h"
#include "tests/text/read_support.h"

#include <functional>
#include <random>

using reader_test::Reading;

namespace {

using test::times;

class ReaderHostile : public QrvTest {
  protected:
    ~ReaderHostile() override { EXPECT_TRUE(text_state().idle()); }
};

TEST_F(ReaderHostile, nesting_stops_at_the_limit) {
    cat::max_read_depth = 10;
    Reading good(times("[", 10) + "1" + times("]", 10));
    EXPECT_EQ(good.log, "");
    Reading deep("{ a = " + times("[", 10) + "1" + times("]", 10) + "; b = 2 }");
    EXPECT_EQ(deep.log.substr(0, deep.log.find('\n') + 1),
              "0x40000001 Line 1: Nesting is deeper than 10, path : /a/0/0/0/0/0/0/0/0/0\n");
    EXPECT_EQ(deep.text_at("b"), "2") << "reading continues after it";
}

TEST_F(ReaderHostile, a_hundred_thousand_brackets_are_refused) {
    for (std::string const open : {"[", "{a=", "< ", "{"}) {
        Reading r(times(open, 100000));
        EXPECT_NE(r.log.find("Nesting is deeper than "), std::string::npos) << open;
        Reading closed(times("[", 100000) + times("]", 100000));
        EXPECT_NE(closed.log.find("Nesting is deeper than "), std::string::npos);
    }
}

TEST_F(ReaderHostile, a_hundred_thousand_nested_typed_values_are_refused) {
    Reading r(times("int(", 100000));
    EXPECT_NE(r.log.find("Nesting is deeper than 64, path : "), std::string::npos);
    Reading closed(times("int(", 10000) + "5" + times(")", 10000));
    EXPECT_NE(closed.log.find("Nesting is deeper than 64, path : "), std::string::npos);
}

TEST_F(ReaderHostile, sixty_four_typed_values_are_read) {
    EXPECT_EQ(reader_test::read_back(times("int(", 64) + "5" + times(")", 64)), "5");
    Reading r(times("int(", 65) + "5" + times(")", 65));
    EXPECT_NE(r.log.find("Nesting is deeper than 64, path : \n"), std::string::npos);
}

TEST_F(ReaderHostile, the_default_depth_is_reached) {
    auto const depth = static_cast<size_t>(cat::max_read_depth - 1);
    EXPECT_EQ(depth, 999U);
    Reading r(times("{a=", depth) + "1" + times("}", depth));
    EXPECT_EQ(r.log, "");
    r.value = nullptr;
}

TEST_F(ReaderHostile, a_thousand_containers_are_read_and_one_more_is_not) {
    for (auto const &[open, close] : {std::pair("{a=", "}"), std::pair("[", "]")}) {
        Reading good(times(open, 1000) + "1" + times(close, 1000));
        EXPECT_EQ(good.log, "");
        EXPECT_EQ(good.code, 0);
        Reading deep(times(open, 1001) + "1" + times(close, 1001));
        EXPECT_EQ(deep.log.substr(0, 52), "0x40000001 Line 1: Nesting is deeper than 1000, path");
        EXPECT_EQ(deep.scan.gettok(), 0) << "all brackets are consumed";
    }
    messages();
}

// Merging and assigning in place must never make a value contain itself: the fixture would find the
// leaked objects.
TEST_F(ReaderHostile, random_references_and_repeated_keys_leak_nothing) {
    std::mt19937 random(99);
    auto const below = [&random](unsigned n) { return static_cast<unsigned>(random() % n); };
    auto const key = [&below] { return std::string(1, "abc01"[below(5)]); };
    auto const reference = [&] {
        std::string path;
        for (auto n = 1 + below(3); n; --n) path += "/" + key();
        return "#cRef(" + path + ");";
    };
    std::function<std::string(int)> const entries = [&](int depth) {
        std::string text;
        for (auto n = below(6); n; --n) {
            auto const kind = depth ? below(8) : below(3);
            bool const alone = below(12) == 0; // without a key
            if (!alone) text += key() + "=";
            if (kind == 0 && !alone)
                text += std::to_string(below(4)) + ";";
            else if (kind <= 2)
                text += reference();
            else if (kind <= 5 || alone)
                text += "{" + entries(depth ? depth - 1 : 0) + "};";
            else
                text += kind == 6 ? "[" + reference() + "1;" + reference() + "];"
                                  : "< {" + entries(depth - 1) + "};" + reference() + "1>;";
        }
        return text;
    };
    cat::ReadReport report;
    unsigned cycles = 0;
    for (int round = 0; round < 2000; ++round) {
        std::string const text = "{" + entries(4) + "}";
        auto const living = cObjBase::ob_count();
        { Reading const r(text); }
        ASSERT_EQ(cObjBase::ob_count(), living) << text;
        ASSERT_TRUE(text_state().idle()) << text;
        for (cat::ReadError const &error : report.entries()) cycles += error.code == 0x40020000;
        report.clear();
    }
    EXPECT_GT(cycles, 20u) << "the random texts contain such cases";
}

TEST_F(ReaderHostile, the_stack_limits_a_raised_depth_limit) {
    cat::max_read_depth = 1000000;
    Reading r(times("[", 200000));
    EXPECT_NE(r.log.find("Nesting is deeper than "), std::string::npos);
}

TEST_F(ReaderHostile, unclosed_quotes_and_backslashes_are_read) {
    for (std::string const piece : {"\\\"", "'\\", "\"\\\\", "/*", "//", "#", "#cRef(", "'"}) {
        Reading r("{ a = " + times(piece, 20000));
        EXPECT_TRUE(text_state().idle()) << piece;
    }
}

TEST_F(ReaderHostile, binary_junk_is_read) {
    std::uint32_t seed = 12345;
    char const grammar[] = "{}[]<>()=;,#/\"' \n\\abct159.-+uxf*&";
    for (int round = 0; round < 3000; ++round) {
        std::string text;
        for (int i = 0; i < 60; ++i) {
            seed = seed * 1664525 + 1013904223;
            bool const any = round % 4 == 0;
            text +=
                any ? static_cast<char>(seed >> 24) : grammar[(seed >> 16) % (sizeof grammar - 1)];
        }
        Reading r("{" + text, false);
        r.scan.return_com(round % 2 == 0);
        while (r.next() != -1) continue;
        ASSERT_TRUE(text_state().idle()) << text;
    }
    text_state().forget_comments();
    messages();
}

TEST_F(ReaderHostile, null_bytes_are_read) {
    Reading r(std::string("{ a = \0 1; 'b\0c' = 2 }", 23));
    EXPECT_TRUE(text_state().idle());
}

TEST_F(ReaderHostile, a_set_may_have_two_hundred_thousand_ints) {
    std::string text = "<";
    for (int i = 0; i < 200000; ++i) text += std::to_string(i) + ";";
    for (int i = 0; i < 1000; ++i) text += std::to_string(i) + ";";
    Reading r(text + ">");
    EXPECT_EQ(r.log, "");
    EXPECT_EQ(dynamic_cast<cMapObj &>(*r.value).size(), 200000);
}

TEST_F(ReaderHostile, long_keys_may_have_many_slashes) {
    std::string const key = "\"" + times("a/", 100000) + "\"";
    Reading r("{ " + key + " = {x = 1}; y = #cRef(/" + key + "/x) }");
    EXPECT_EQ(r.log, "");
    EXPECT_EQ(r.text_at("y"), "1");
}

TEST_F(ReaderHostile, a_value_of_a_set_may_change_while_the_set_is_read) {
    Reading r("{ s = <1; {a = #cRef(/s/0); a = 5}; 1; 2> }");
    EXPECT_EQ(r.text_at("s"), "<5, {a= #cRef(/0); }, 1, 2, >")
        << "the set is written on its own, so it is the root of the path";
}

} // namespace

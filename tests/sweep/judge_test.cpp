// The judge of edits finds every fault that an edit can have.

#include "tests/sweep/sweep.h"

#include "tests/support/fixture.h"

#include <gtest/gtest.h>

namespace {

using namespace sweep_test;

TEST(Judge, changed_lines_count_as_often_as_their_longer_side) {
    cLines const second{false, true};
    EXPECT_EQ(changed_lines("a\nb\nc\n", "a\nb\nc\n", second), 0u);
    EXPECT_EQ(changed_lines("a\nb\nc\n", "a\nx\nc\n", second), 1u);
    EXPECT_EQ(changed_lines("a\nb\nc\n", "a\nc\n", second), 1u);
    EXPECT_EQ(changed_lines("a\nb\nc\n", "a\nx\nb\ny\nc\n", second), 3u);
    EXPECT_EQ(changed_lines("a\nb\nc\n", "a\nb\nx\nc\n", second), 1u);
    EXPECT_EQ(changed_lines("a\nb", "a\nx", second), 1u);
}

TEST(Judge, no_other_line_may_change) {
    cLines const second{false, true};
    EXPECT_EQ(changed_lines("a\nb\nc\n", "x\nb\nc\n", second), std::nullopt);
    EXPECT_EQ(changed_lines("a\nb\nc\n", "a\nb\nx\n", second), std::nullopt);
    EXPECT_EQ(changed_lines("a\nb\nc\n", "a\nb\n", second), std::nullopt);
    EXPECT_EQ(changed_lines("a\nb\nc\n", "a\nb\nc\nd\n", second), std::nullopt);
    EXPECT_EQ(changed_lines("a\nb\nc\n", "x\na\nb\nc\n", second), std::nullopt);
    EXPECT_EQ(changed_lines("a\nb\nc\n", "a\nc\nb\n", {}), std::nullopt);
}

TEST(Judge, lines_at_several_positions_may_change) {
    cLines const both{false, true, false, true};
    EXPECT_EQ(changed_lines("a\nb\nc\nd\ne\n", "a\nB\nc\nD\ne\n", both), 2u);
    EXPECT_EQ(changed_lines("a\nb\nc\nd\ne\n", "a\nB\nC\nD\ne\n", both), std::nullopt);
}

TEST(Judge, comments_are_read_outside_strings) {
    std::string const text = "/* a\n b */ x = \"// no\"; y = '\\'/* no */'; // c \r\n//d";
    EXPECT_EQ(comments(text), (std::vector<std::string>{"/* a\n b */", "// c", "//d"}));
    EXPECT_EQ(comments(text, {{0, 5}}), (std::vector<std::string>{"// c", "//d"}));
}

TEST(Judge, a_comment_that_occurs_once_less_is_lost) {
    EXPECT_EQ(lost({"a", "b", "a"}, {"a", "b"}), 1u);
    EXPECT_EQ(lost({"a", "b"}, {"b", "c", "a"}), 0u);
}

// The sweep complains about tools that edit badly.
class Sweep : public testing::Test {
  protected:
    static void SetUpTestSuite() { ASSERT_TRUE(test::listening()); }

    // The complaints about the one edit that `only` selects, whose result is replaced by this text.
    static std::string complaint(std::string const &only, cRun const &instead) {
        std::string const text = "{\n  // first\n  a = 1; // one\n  b = word;\n}\n";
        std::string all;
        sweep(
            text, 1,
            [&](std::vector<std::string> const &command, std::string const &bytes) {
                return command[0] + ' ' + command[2] == only ? instead : run(command, bytes);
            },
            [&](std::string const &what) { all += what + '\n'; });
        return all;
    }
};

TEST_F(Sweep, does_not_complain_about_the_tool) { EXPECT_EQ(complaint("none", {}), ""); }

TEST_F(Sweep, complains_about_another_line) {
    EXPECT_EQ(
        complaint("set b = \"changed by the sweep\"",
                  {0, "{\n  // first\n  a = 1;  // one\n  b = \"changed by the sweep\";\n}\n", ""}),
        "set b = \"changed by the sweep\": changed another line\n");
}

TEST_F(Sweep, complains_about_too_many_lines) {
    EXPECT_EQ(complaint("set a = 2", {0, "{\n  // first\n  a = \n2; // one\n  b = word;\n}\n", ""}),
              "set a = 2: changed 2 lines instead of 1\n");
}

TEST_F(Sweep, complains_about_lost_comments) {
    EXPECT_EQ(complaint("set a = 2", {0, "{\n  // first\n  a = 2;\n  b = word;\n}\n", ""}),
              "set a = 2: lost 1 comments\n");
    EXPECT_EQ(complaint("del a", {0, "{\n  // first\n  b = word;\n}\n", ""}),
              "del a: moved or kept a comment\n");
}

TEST_F(Sweep, complains_about_another_value_and_refusals) {
    EXPECT_EQ(complaint("set a = 2", {0, "{\n  // first\n  a = 3; // one\n  b = word;\n}\n", ""}),
              "set a = 2: another tree\n");
    EXPECT_EQ(complaint("set a = 2", {2, "", "no"}), "set a = 2: refused: no\n");
}

} // namespace

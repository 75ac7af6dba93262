// Comments under `fmt`: kept where the layout has a place for them, else told with their own place.

#include "tests/tool/tool_run.h"

using tool_test::cRun;
using tool_test::times;

namespace {

class ToolFmtComments : public tool_test::Tool {
  protected:
    // The file comes out as it is, without a word.
    void kept(std::string const &text) const { EXPECT_EQ(fmt(text), (cRun{0, text, ""})); }
    // The places and texts of the comments that are told as lost, all that is told.
    std::string lost(std::string const &text) const {
        cRun const run = fmt(text);
        EXPECT_EQ(run.status, run.err.empty() ? 0 : 1);
        std::string told, line;
        std::string const what = ": error: this comment would be lost: ";
        for (std::istringstream is(run.err); std::getline(is, line);) {
            size_t const at = line.find(what);
            EXPECT_TRUE(line.starts_with("f:") && at != std::string::npos) << line;
            told += line.substr(2, at - 2) + " " + line.substr(at + what.size()) + "\n";
        }
        return told;
    }
};

TEST_F(ToolFmtComments, kept_behind_scalars) {
    kept("{\n  a= 1; // one\n  b= x; /* two */\n  c= \"y z\";// three\n  d= 1.50000;   // "
         "four\n}\n");
}

TEST_F(ToolFmtComments, kept_behind_the_bracket_of_a_container_on_many_lines) {
    kept("{ // map\n  a= [ // vector\n      1,\n  ]; \n  b= <\n      // set\n      1,\n  >; \n}\n");
}

TEST_F(ToolFmtComments, kept_behind_a_container_on_one_line) {
    kept("{\n  a= {x= 1; }; // map\n  b= [1, ]; // vector\n  c= <1, >; // set\n}\n");
}

TEST_F(ToolFmtComments, kept_over_several_lines_and_in_groups) {
    kept("{\n  a= 1; // one\n  // more of one\n\n  /* and\n     more */\n  b= 2;\n}\n");
}

TEST_F(ToolFmtComments, kept_before_the_closing_bracket) { kept("{\n  a= 1;\n  // the end\n}\n"); }

TEST_F(ToolFmtComments, indentation_is_kept_as_it_was) {
    EXPECT_EQ(fmt("{\n\t\ta = 1;\n\t\t// tabs\n}"), (cRun{0, "{\n  a= 1;\n\t\t// tabs\n}\n", ""}));
}

TEST_F(ToolFmtComments, behind_a_key_goes_to_the_value_before) {
    EXPECT_EQ(fmt("{\n a= 1;\n b /* k */ = /* v */ 2;\n}"),
              (cRun{1, "{\n  a= 1; /* k */\n  b= 2;\n}\n",
                    "f:3:14: error: this comment would be lost: /* v */\n"}));
}

TEST_F(ToolFmtComments, lost_behind_the_bracket_that_closes_many_lines) {
    EXPECT_EQ(lost("{\n a=[\n1\n]; // x\n}"), "4:4 // x\n");
    EXPECT_EQ(lost("{\n} // x"), "2:3 // x\n");
    EXPECT_EQ(lost("{\n}\n\n/* x */\n"), "4:1 /* x */\n");
}

TEST_F(ToolFmtComments, lost_inside_containers_on_one_line) {
    EXPECT_EQ(lost("{a=1; /* x */ b=2}"), "1:7 /* x */\n");
    EXPECT_EQ(lost("{\n a=[1, /* x */ 2];\n}"), "2:8 /* x */\n");
}

TEST_F(ToolFmtComments, lost_behind_constants) {
    EXPECT_EQ(lost("{\n a=#nil; // x\n b=#true; // y\n}"), "2:10 // x\n3:11 // y\n");
}

TEST_F(ToolFmtComments, lost_inside_typed_values) {
    EXPECT_EQ(lost("{\n a=int( /* x */ 5);\n}"), "2:9 /* x */\n");
    EXPECT_EQ(lost("{\n a=int( // x\n 5);\n}"), "2:9 // x\n");
}

TEST_F(ToolFmtComments, lost_behind_references_to_what_has_a_comment) {
    EXPECT_EQ(lost("{\n a=1; // x\n b=#cRef(/a); // y\n}"), "3:15 // y\n");
}

TEST_F(ToolFmtComments, lost_behind_a_value_without_a_container) {
    EXPECT_EQ(lost("5 // x"), "1:3 // x\n");
    EXPECT_EQ(lost("word /* x */"), "1:6 /* x */\n");
    EXPECT_EQ(lost("{a=1} // x"), "1:7 // x\n");
}

TEST_F(ToolFmtComments, lost_on_a_repeated_key) {
    EXPECT_EQ(lost("{\n a=1; // x\n a=2; // y\n}"), "3:7 // y\n");
}

TEST_F(ToolFmtComments, of_equal_text_are_told_by_their_own_places) {
    EXPECT_EQ(lost("{\n a=#nil; // x\n b=1; // x\n c=#nil; // x\n d=2; // x\n}"),
              "2:10 // x\n4:10 // x\n");
    EXPECT_EQ(lost("{\n a=1; // x\n b=#nil; // x\n c=2; // x\n}"), "3:10 // x\n");
    EXPECT_EQ(lost("{\n a=1; // x\n} // x\n// x\n"), "3:3 // x\n4:1 // x\n");
}

TEST_F(ToolFmtComments, of_a_shared_value_stand_at_each_of_its_places) {
    EXPECT_EQ(fmt("{\n a=1; // x\n b=#cRef(/a);\n c=#nil; // x\n}"),
              (cRun{1, "{\n  a= 1; // x\n  b= #cRef(/a); // x\n  c= #nil;\n}\n",
                    "f:4:10: error: this comment would be lost: // x\n"}));
    kept("{\n  a= 1; // x\n  b= #cRef(/a); // x\n}\n");
}

TEST_F(ToolFmtComments, that_look_like_numbered_ones_are_followed_too) {
    EXPECT_EQ(lost("{\n a=1; //1: x\n b=#nil; //0: x\n c=2; //7\n}"), "3:10 //0: x\n");
}

TEST_F(ToolFmtComments, of_the_shortest_forms) {
    kept("//\n{ //\n  a= 1; /**/\n  b= 2; //\n  c= 3; ///\n  d= 4; /*/ */\n  e= 5; /***/\n}\n");
    EXPECT_EQ(lost("{\n a=#nil; //\n b=#nil; /**/\n c=#nil; /*/ */\n}"),
              "2:10 //\n3:10 /**/\n4:10 /*/ */\n");
}

TEST_F(ToolFmtComments, long_ones_are_told_by_their_first_line_shortened) {
    EXPECT_EQ(lost("[#nil /* one\n two */]"), "1:7 /* one\n");
    std::string const x = times("x", 58), y = times("y", 60);
    EXPECT_EQ(lost("[1 /*" + x + y + "*/]"),
              "1:4 /*" + x.substr(0, 55) + " ... " + y.substr(0, 55) + "*/\n");
}

TEST_F(ToolFmtComments, control_characters_in_them_are_shown_as_numbers) {
    EXPECT_EQ(lost("[1 /* \x1b[1m\tx\x7f */]"), "1:4 /* \\x1b[1m\tx\\x7f */\n");
}

TEST_F(ToolFmtComments, that_are_lost_are_told_up_to_the_limit) {
    std::string const text = "{\n" + times(" a=#nil; // x\n", 150) + "}";
    cRun const all = run_on(text, {"fmt", "--max-errors", "1000"});
    EXPECT_EQ(std::count(all.err.begin(), all.err.end(), '\n'), 150);
    cRun const run = fmt(text);
    EXPECT_EQ(std::count(run.err.begin(), run.err.end(), '\n'), 101);
    EXPECT_EQ(run.err.substr(run.err.rfind("f:101:")),
              "f:101:10: error: this comment would be lost: // x\nf: error: 50 more\n");
    EXPECT_EQ(run_on(text, {"fmt", "--max-errors", "1"}),
              (cRun{1, "{\n  a= #nil;\n}\n",
                    "f:2:10: error: this comment would be lost: // x\nf: error: 149 more\n"}));
}

} // namespace

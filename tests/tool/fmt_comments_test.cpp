// Comments under `fmt`: each comment is preserved once, with its entry.

#include "tests/tool/tool_run.h"

using tool_test::cRun;
using tool_test::times;

namespace {

class ToolFmtComments : public tool_test::Tool {
  protected:
    // `fmt` leaves the file as it is, and prints no message.
    void kept(std::string const &text) const { EXPECT_EQ(fmt(text), (cRun{0, text, ""})); }
    // `fmt` changes the file to this text, which it leaves as it is.
    void becomes(std::string const &text, std::string const &layout) const {
        EXPECT_EQ(fmt(text), (cRun{0, layout, ""}));
        EXPECT_EQ(fmt(layout), (cRun{0, layout, ""}));
    }
};

TEST_F(ToolFmtComments, are_preserved_after_scalars) {
    kept("{\n  a= 1; // one\n  b= x; /* two */\n  c= \"y z\";// three\n  d= 1.50000;   // "
         "four\n}\n");
}

TEST_F(ToolFmtComments, are_preserved_after_the_bracket_of_a_container_on_many_lines) {
    kept("{ // map\n  a= [ // vector\n      1,\n  ];\n  b= <\n      // set\n      1,\n  >;\n}\n");
}

TEST_F(ToolFmtComments, are_preserved_after_a_container_on_one_line) {
    kept("{\n  a= {x= 1; }; // map\n  b= [1, ]; // vector\n  c= <1, >; // set\n}\n");
}

TEST_F(ToolFmtComments, are_preserved_over_several_lines_and_in_groups) {
    kept("{\n  a= 1; // one\n  // more of one\n\n  /* and\n     more */\n  b= 2;\n}\n");
}

TEST_F(ToolFmtComments, are_preserved_before_the_closing_bracket) {
    kept("{\n  a= 1;\n  // the end\n}\n");
}

TEST_F(ToolFmtComments, comments_on_separate_lines_are_indented_like_their_entries) {
    becomes("{\n\t\ta = 1;\n\t\t// tabs\n}", "{\n  a= 1;\n  // tabs\n}\n");
    becomes("{\n  // one\n\n     /* two\n        more */\n a=[\n// three\n1];}",
            "{\n  // one\n\n  /* two\n     more */\n  a= [\n      // three\n      1,\n  ];\n}\n");
}

TEST_F(ToolFmtComments, empty_lines_around_them_are_reduced_to_one) {
    becomes("{\n\n\n// one\n\n\n\n a=1;\n\n\n// two\n\n\n// three\n b=2;\n\n c=3;\n\n// four\n\n}",
            "{\n  // one\n\n  a= 1;\n\n  // two\n\n  // three\n  b= 2;\n  c= 3;\n\n  // four\n}\n");
}

TEST_F(ToolFmtComments, further_lines_after_an_entry_stay_below_the_first) {
    becomes("{\na = 1;    // one\n          // more\n// b\nb=2}",
            "{\n  a= 1;    // one\n           // more\n  // b\n  b= 2;\n}\n");
}

TEST_F(ToolFmtComments, are_preserved_between_a_key_and_its_value) {
    becomes("{\n a= 1;\n b /* k */ = /* v */ 2;\n}", "{\n  a= 1;\n  b= 2; /* k */ /* v */\n}\n");
    becomes("{\n a= // v\n 1;\n}", "{\n  a= 1; // v\n}\n");
    becomes("{\n a= // v\n [\n1];\n}", "{\n  a= [ // v\n      1,\n  ];\n}\n");
    becomes("{\n a= // v\n [1];\n b= /* w */ [2];\n}",
            "{\n  a= [ // v\n      1,\n  ];\n  b= [/* w */ 2, ];\n}\n");
}

TEST_F(ToolFmtComments, are_preserved_after_the_bracket_that_closes_many_lines) {
    becomes("{\n a=[\n1\n]; // x\n}", "{\n  a= [\n      1,\n  ]; // x\n}\n");
}

TEST_F(ToolFmtComments, are_preserved_after_the_outermost_value) {
    kept("{\n} // x\n");
    kept("{\n}\n\n/* x */\n// y\n");
    kept("5 // x\n");
    kept("word /* x */\n");
    becomes("{a=1} // x", "{a= 1; } // x\n");
    becomes("5; // x\n\n\n\n  // y\n", "5 // x\n\n  // y\n");
}

TEST_F(ToolFmtComments, are_preserved_in_a_container_on_one_line) {
    becomes("{a=1; /* x */ b=2}", "{a= 1; /* x */ b= 2; }\n");
    becomes("{\n a=[1, /* x */ 2];\n b={/* y */};\n c=[/* z */ 3 /* w */];}",
            "{\n  a= [1, /* x */ 2, ];\n  b= {/* y */ };\n  c= [/* z */ 3, /* w */ ];\n}\n");
}

TEST_F(ToolFmtComments, a_comment_up_to_a_line_end_puts_its_container_on_many_lines) {
    becomes("{a=1; // x\n b=2}", "{\n  a= 1; // x\n  b= 2;\n}\n");
    becomes("{a=[1, /* two\nlines */ 2]; b=[3]}",
            "{\n  a= [\n      1, /* two\nlines */\n      2,\n  ];\n  b= [3, ];\n}\n");
}

TEST_F(ToolFmtComments, are_preserved_after_constants) {
    becomes("{\n a=#nil; // x\n b=#true; // y\n}", "{\n  a= #nil; // x\n  b= #true; // y\n}\n");
}

TEST_F(ToolFmtComments, are_preserved_inside_typed_values) {
    becomes("{\n a=int( /* x */ 5);\n}", "{\n  a= 5; /* x */\n}\n");
    becomes("{\n a=int( // x\n 5);\n}", "{\n  a= 5; // x\n}\n");
    std::string const type = "{\n  P= attlist(\n      // the place\n      x= attspec(type=int; "
                             "flag=#REQUIRED;); // in m\n";
    becomes("{\nP=attlist(\n// the place\nx=attspec( // in m\ntype=int));p=P( // where\nx=1)}",
            type + "  );\n  p= P( // where\n      x= 1;\n  );\n}\n");
    becomes("{M=choice({a=1 // one\n}); m=M(a)}",
            "{\n  M= choice({\n      a= 1; // one\n  });\n  m= M(a);\n}\n");
}

TEST_F(ToolFmtComments, comments_of_shared_values_are_written_once) {
    kept("{\n  a= 1; // x\n  b= #cRef(/a); // y\n  c= #cRef(/a);\n}\n");
}

TEST_F(ToolFmtComments, comments_of_repeated_keys_are_collected) {
    becomes("{\n a=1; // x\n b=3;\n a=2; // y\n}", "{\n  a= 2; // x\n        // y\n  b= 3;\n}\n");
    becomes("{\n a={x=1; /* x */};\n // more\n a={y=2; /* y */};\n}",
            "{\n  // more\n  a= {x= 1; /* x */ y= 2; /* y */ };\n}\n");
}

TEST_F(ToolFmtComments, may_have_the_shortest_forms) {
    kept("//\n{ //\n  a= 1; /**/\n  b= 2; //\n  c= 3; ///\n  d= 4; /*/ */\n  e= 5; /***/\n}\n");
    becomes("{\n a=#nil; //\n b=#nil; /**/\n c=#nil; /*/ */\n}",
            "{\n  a= #nil; //\n  b= #nil; /**/\n  c= #nil; /*/ */\n}\n");
}

TEST_F(ToolFmtComments, may_have_blanks_at_line_ends) {
    std::string const text =
        "// a \n{ // b \n  c= [ // d\t\n  ]; \n  e= \"f \\\n g\"; /* h \n */\n}\n";
    becomes(text, "// a\n{ // b\n  c= [ // d\n  ];\n  e= \"f \\\n g\"; /* h\n */\n}\n");
}

// --- the plain writer's text ---

class ToolFmtCanonical : public ToolFmtComments {
  protected:
    // The positions and texts of the comments that are reported as lost. Nothing else is reported.
    std::string lost(std::string const &text) const {
        cRun const run = run_on(text, {"fmt", "--canonical"});
        EXPECT_EQ(run.status, run.err.empty() ? 0 : 1);
        std::string reported, line;
        std::string const what = ": error: this comment would be lost: ";
        for (std::istringstream is(run.err); std::getline(is, line);) {
            size_t const at = line.find(what);
            EXPECT_TRUE(line.starts_with("f:") && at != std::string::npos) << line;
            reported += line.substr(2, at - 2) + " " + line.substr(at + what.size()) + "\n";
        }
        return reported;
    }
};

TEST_F(ToolFmtCanonical, comments_after_the_bracket_that_closes_many_lines_are_lost) {
    EXPECT_EQ(lost("{\n a=[\n1\n]; // x\n}"), "4:4 // x\n");
    EXPECT_EQ(lost("{\n} // x"), "2:3 // x\n");
    EXPECT_EQ(lost("{\n}\n\n/* x */\n"), "4:1 /* x */\n");
}

TEST_F(ToolFmtCanonical, comments_inside_containers_on_one_line_are_lost) {
    EXPECT_EQ(lost("{a=1; /* x */ b=2}"), "1:7 /* x */\n");
    EXPECT_EQ(lost("{\n a=[1, /* x */ 2];\n}"), "2:8 /* x */\n");
}

TEST_F(ToolFmtCanonical, comments_after_constants_are_lost) {
    EXPECT_EQ(lost("{\n a=#nil; // x\n b=#true; // y\n}"), "2:10 // x\n3:11 // y\n");
}

TEST_F(ToolFmtCanonical, comments_inside_typed_values_are_lost) {
    EXPECT_EQ(lost("{\n a=int( /* x */ 5);\n}"), "2:9 /* x */\n");
    EXPECT_EQ(lost("{\n a=int( // x\n 5);\n}"), "2:9 // x\n");
}

TEST_F(ToolFmtCanonical, comments_after_references_to_commented_values_are_lost) {
    EXPECT_EQ(lost("{\n a=1; // x\n b=#cRef(/a); // y\n}"), "3:15 // y\n");
    EXPECT_EQ(lost("{\n a=1; // x\n b=#cRef(/a) // x\n; // x\n}"), "4:3 // x\n");
}

TEST_F(ToolFmtCanonical, comments_after_a_value_without_a_container_are_lost) {
    EXPECT_EQ(lost("5 // x"), "1:3 // x\n");
    EXPECT_EQ(lost("word /* x */"), "1:6 /* x */\n");
    EXPECT_EQ(lost("{a=1} // x"), "1:7 // x\n");
}

TEST_F(ToolFmtCanonical, comments_on_a_repeated_key_are_lost) {
    EXPECT_EQ(lost("{\n a=1; // x\n a=2; // y\n}"), "3:7 // y\n");
}

TEST_F(ToolFmtCanonical, comments_with_equal_text_are_reported_at_their_positions) {
    EXPECT_EQ(lost("{\n a=#nil; // x\n b=1; // x\n c=#nil; // x\n d=2; // x\n}"),
              "2:10 // x\n4:10 // x\n");
    EXPECT_EQ(lost("{\n a=1; // x\n b=#nil; // x\n c=2; // x\n}"), "3:10 // x\n");
    EXPECT_EQ(lost("{\n a=1; // x\n} // x\n// x\n"), "3:3 // x\n4:1 // x\n");
}

TEST_F(ToolFmtCanonical, comments_of_a_shared_value_are_written_wherever_it_occurs) {
    EXPECT_EQ(run_on("{\n a=1; // x\n b=#cRef(/a);\n c=#nil; // x\n}", {"fmt", "--canonical"}),
              (cRun{1, "{\n  a= 1; // x\n  b= #cRef(/a); // x\n  c= #nil;\n}",
                    "f:4:10: error: this comment would be lost: // x\n"}));
}

TEST_F(ToolFmtCanonical, comments_that_look_numbered_are_also_tracked) {
    EXPECT_EQ(lost("{\n a=1; //1: x\n b=#nil; //0: x\n c=2; //7\n}"), "3:10 //0: x\n");
}

TEST_F(ToolFmtCanonical, comments_in_text_after_the_value_are_lost) {
    EXPECT_EQ(run_on("[1] /*x*/ /*y*/ [2 /*z*/]\n// x", {"fmt", "--canonical"}),
              (cRun{1, "[1, ]",
                    "f:1:5: error: this comment would be lost: /*x*/\n"
                    "f:1:11: error: this comment would be lost: /*y*/\n"
                    "f:1:20: error: this comment would be lost: /*z*/\n"
                    "f:2:1: error: this comment would be lost: // x\n"
                    "f:1:17: error: text after the first value would be lost\n"}));
    EXPECT_EQ(run_on("[1] 2 // x", {"fmt", "--canonical"}),
              (cRun{1, "[1, ]",
                    "f:1:7: error: this comment would be lost: // x\n"
                    "f:1:5: error: text after the first value would be lost\n"}));
}

TEST_F(ToolFmtCanonical, comments_may_have_the_shortest_forms) {
    EXPECT_EQ(lost("{\n a=#nil; //\n b=#nil; /**/\n c=#nil; /*/ */\n}"),
              "2:10 //\n3:10 /**/\n4:10 /*/ */\n");
}

TEST_F(ToolFmtCanonical, long_comments_are_reported_by_their_shortened_first_line) {
    EXPECT_EQ(lost("[#nil /* one\n two */]"), "1:7 /* one\n");
    std::string const x = times("x", 58), y = times("y", 60);
    EXPECT_EQ(lost("[1 /*" + x + y + "*/]"),
              "1:4 /*" + x.substr(0, 55) + " ... " + y.substr(0, 55) + "*/\n");
}

TEST_F(ToolFmtCanonical, control_characters_in_comments_are_shown_as_numbers) {
    EXPECT_EQ(lost("[1 /* \x1b[1m\tx\x7f */]"), "1:4 /* \\x1b[1m\tx\\x7f */\n");
}

TEST_F(ToolFmtCanonical, lost_comments_are_reported_up_to_the_limit) {
    std::string const text = "{\n" + times(" a=#nil; // x\n", 150) + "}";
    cRun const all = run_on(text, {"fmt", "--canonical", "--max-errors", "1000"});
    EXPECT_EQ(std::count(all.err.begin(), all.err.end(), '\n'), 150);
    cRun const run = run_on(text, {"fmt", "--canonical"});
    EXPECT_EQ(std::count(run.err.begin(), run.err.end(), '\n'), 101);
    EXPECT_EQ(run.err.substr(run.err.rfind("f:101:")),
              "f:101:10: error: this comment would be lost: // x\nf: error: 50 more\n");
    EXPECT_EQ(run_on(text, {"fmt", "--canonical", "--max-errors", "1"}),
              (cRun{1, "{\n  a= #nil;\n}",
                    "f:2:10: error: this comment would be lost: // x\nf: error: 149 more\n"}));
}

} // namespace

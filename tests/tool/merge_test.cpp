// `merge`: merges the value of one file into that of another. merge_text_test.cpp tests the
// resulting text.

#include "tests/tool/tool_run.h"

using tool_test::cRun;
using tool_test::times;
using tool_test::usage_error;

namespace {

class ToolMerge : public tool_test::Tool {
  protected:
    cRun merge(std::string const &target, std::string const &source,
               std::vector<std::string> more = {}) const {
        write("t", target);
        write("s", source);
        more.insert(more.begin(), {"merge", "t", "s"});
        return run(std::move(more));
    }
    // In the writer's layout.
    std::string merged(std::string const &target, std::string const &source,
                       std::string const &commands = "-xx") const {
        cRun const run = merge(target, source, {"--commands=" + commands, "--reformat"});
        EXPECT_EQ(run.status, 0) << commands;
        EXPECT_EQ(run.err, "") << commands;
        return run.out;
    }
    std::string refused(std::string const &target, std::string const &source,
                        std::vector<std::string> more = {}) const {
        more.push_back("-i");
        cRun const run = merge(target, source, std::move(more));
        EXPECT_EQ(run.status, 2);
        EXPECT_EQ(run.out, "");
        EXPECT_EQ(read("t"), target);
        return run.err;
    }
};

TEST_F(ToolMerge, maps_are_merged) {
    EXPECT_EQ(
        merged("{a= 1; m= {x= 1; y= 2; }; v= [1]; c= <1>; k= 5}",
               "{a= 2; m= {y= 3; z= {q= 4; }; }; v= [2, 3]; c= <1, 2>; n= x}"),
        "{a= 2; m= {x= 1; y= 3; z= {q= 4; }; }; v= [1, 2, 3, ]; c= <1, 2, >; k= 5; n= x; }\n");
}

TEST_F(ToolMerge, letters_select_the_handling_of_keys) {
    std::string const target = "{t= 1; b= {x= 1; }}", source = "{b= {y= 2; }; s= 3}";
    EXPECT_EQ(merged(target, source, "-xx"), "{t= 1; b= {x= 1; y= 2; }; s= 3; }\n");
    EXPECT_EQ(merged(target, source, "0as"), "{b= {y= 2; }; s= 3; }\n");
    EXPECT_EQ(merged(target, source, "???"), "{b= {y= 2; }; s= 3; }\n");
    EXPECT_EQ(merged(target, source, "-s-"), "{t= 1; b= {y= 2; }; }\n");
    EXPECT_EQ(merged(target, source, "-0x"), "{t= 1; s= 3; }\n");
    EXPECT_EQ(merged(target, source, "00-"), "{}\n");
    EXPECT_EQ(merged(target, source, "---"), "{t= 1; b= {x= 1; }; }\n");
    EXPECT_EQ(merged(target, source, "--s"), "{t= 1; b= {x= 1; }; s= 3; }\n");
}

TEST_F(ToolMerge, vectors_and_sets_are_merged) {
    EXPECT_EQ(merged("[1, 2]", "[3]"), "[1, 2, 3, ]\n");
    EXPECT_EQ(merged("[1, 2]", "[3]", "0ax"), "[3, ]\n");
    EXPECT_EQ(merged("[3]", "[1, 2]", "0ax"), "[1, 2, ]\n");
    EXPECT_EQ(merged("[1, 2]", "[3, 4, 5]", "-ax"), "[3, 4, 5, ]\n");
    EXPECT_EQ(merged("<1, 2>", "<2, 3>"), "<1, 2, 3, >\n");
    EXPECT_EQ(merged("[]", "[1]"), "[1, ]\n");
}

TEST_F(ToolMerge, values_that_a_vector_would_lose_are_reported) {
    EXPECT_EQ(refused("[1]", "[2, 3]", {"--commands=-xs"}),
              "s: error: not all values could be merged by -xs: 2 instead of 3\n");
}

TEST_F(ToolMerge, containers_of_different_kinds_are_refused) {
    auto const reported = [](std::string const &source, std::string const &target) {
        return "s: error: its value is " + source + ", that of t " + target +
               "; only two maps, two vectors or two sets can be merged\n";
    };
    EXPECT_EQ(refused("[1]", "{a= 1}"), reported("a map", "a vector"));
    EXPECT_EQ(refused("{a= 1}", "[1]"), reported("a vector", "a map"));
    EXPECT_EQ(refused("<1>", "[1]"), reported("a vector", "a set"));
    EXPECT_EQ(refused("1", "2"), reported("an int", "an int"));
    EXPECT_EQ(refused("{}", "5"), reported("an int", "a map"));
}

TEST_F(ToolMerge, a_value_that_cannot_be_merged_is_reported_with_its_position) {
    std::string const target = "{a= 1; m= {n= #nil; s= x; }; v= 5; 'b c'= true}";
    std::string const source =
        "{ a= x; // not a number\n  m= {n= 1;\n s= 7}; v= [1]; \"b c\"= 2; new= 1 }";
    std::string const places =
        "s:1:6: error: at /a: it is an int and cannot store a string as it is\n"
        "s:2:10: error: at /m/n: it holds #nil, which cannot be assigned\n"
        "s:3:5: error: at /m/s: it is a string and cannot store an int as it is\n"
        "s:3:12: error: at /v: it is an int and cannot store a vector as it is\n";
    EXPECT_EQ(refused(target, source),
              places + "s:3:24: error: at /\"b c\": 2 would be stored as true; --convert allows "
                       "it\n");
    EXPECT_EQ(refused(target, source, {"--convert"}), places);
    EXPECT_EQ(refused(target, source, {"--max-errors=1"}),
              places.substr(0, places.find('\n') + 1) + "s: error: 4 more\n");
}

// All paths of this source as strings would need 6 GB.
TEST_F(ToolMerge, a_conflict_in_a_source_with_long_paths_is_reported) {
    std::string open = "{";
    for (int i = 0; i < 200; ++i) open += "k" + std::to_string(i) + "= 1; ";
    open += times("n", 1000) + "= ";
    std::string const source =
                          "{ a= 5; c= " + times(open, 245) + "1" + times("}", 245) + "; b= 6 }",
                      column = std::to_string(source.find("6 }") + 1);
    EXPECT_EQ(refused("{a= text; b= text}", source),
              "s:1:6: error: at /a: it is a string and cannot store an int as it is\ns:1:" +
                  column + ": error: at /b: it is a string and cannot store an int as it is\n");
}

TEST_F(ToolMerge, numbers_that_would_change_are_reported) {
    EXPECT_EQ(refused("{m= {i= 1; }}", "{m= {i= 1.5; }}"),
              "s:1:9: error: at /m/i: 1.50000 would be stored as 1; --convert allows it\n");
    EXPECT_EQ(merge("{m= {i= 1; }}", "{m= {i= 1.5; }}", {"--convert"}),
              (cRun{0, "{m= {i= 1; }}", ""}));
    EXPECT_EQ(merged("{m= {i= 1; f= 1.5f; }}", "{m= {i= 2.0; f= 0.1; }}"),
              "{m= {i= 2; f= 0.100000f; }; }\n");
    EXPECT_EQ(merged("{i= 1}", "{i= 1.5}", "-s-"), "{i= 1.50000; }\n");
    EXPECT_EQ(refused("[1, 2]", "[1, 2.5]", {"--commands=-a-"}),
              "s:1:5: error: at /1: 2.50000 would be stored as 2; --convert allows it\n");
}

TEST_F(ToolMerge, constants_are_merged) {
    std::string const text = "{n= #nil; t= #true; m= {f= #false; }; }";
    EXPECT_EQ(merged(text, text), text + "\n");
    EXPECT_EQ(merged(text, "{t= true; }"), text + "\n");
    EXPECT_EQ(refused(text, "{n= 1; t= false; m= {f= #nil; }; }"),
              "s:1:5: error: at /n: it holds #nil, which cannot be assigned\n"
              "s:1:11: error: at /t: it holds #true, which cannot be assigned\n"
              "s:1:25: error: at /m/f: it holds #false, which cannot be assigned\n");
    EXPECT_EQ(refused("{a= 1; }", "{a= #nil; }", {"--convert"}),
              "s:1:5: error: at /a: it is an int and cannot store #nil as it is\n");
    EXPECT_EQ(merged(text, "{n= 1; t= false; }", "-s-"), "{n= 1; t= false; m= {f= #false; }; }\n");
}

TEST_F(ToolMerge, comments_are_merged) {
    std::string const target =
        "{ // top\n  a= 1; // one\n  b= 2; // two\n  m= { // map\n      x= 1;"
        " // deep\n  }; \n}\n";
    std::string const source =
        "{ // other\n  a= 5; // five\n  m= { // their map\n      y= 2; // new\n  }; \n"
        "  n= 3; // three\n}\n";
    EXPECT_EQ(merged(target, source),
              "{ // top\n  a= 5; // one\n  b= 2; // two\n  m= { // map\n      x= 1; // deep\n"
              "      y= 2; // new\n  }; \n  n= 3; // three\n}\n");
    EXPECT_EQ(
        merged("{\n  a= 1; // one\n  b= 2;\n}\n", "{\n  a= 5; // five\n  b= 6; // six\n}\n", "-s-"),
        "{\n  a= 5; // one\n  b= 6; // six\n}\n");
}

TEST_F(ToolMerge, a_comment_that_the_writer_would_lose_is_reported_and_keeps_the_file) {
    std::string const target = "{\n  a= 1; // one\n  b= 2;\n}\n", source = "{b= 3; }";
    std::string const lost = "t:2:9: error: this comment would be lost: // one\n";
    EXPECT_EQ(merge(target, source, {"--commands=0xx", "--reformat"}),
              (cRun{1, "{\n  b= 3;\n}\n", lost}));
    EXPECT_EQ(refused(target, source, {"--commands=0xx", "--reformat"}),
              lost + "t: error: not written: data would be lost; --force writes the file anyway\n");
    EXPECT_EQ(merge(target, source, {"--commands=0xx", "--reformat", "-i", "--force"}),
              (cRun{0, "", lost}));
    EXPECT_EQ(read("t"), "{\n  b= 3;\n}\n");
}

TEST_F(ToolMerge, a_comment_equal_to_one_of_the_target_does_not_replace_it) {
    cRun const run = merge("{\n  a= 1; // one\n}\n", "{\n  n= 1; //0: zero\n}\n",
                           {"--commands=0xx", "--reformat"});
    EXPECT_EQ(run, (cRun{1, "{\n  n= 1; //0: zero\n}\n",
                         "t:2:9: error: this comment would be lost: // one\n"}));
}

TEST_F(ToolMerge, types_declared_in_both_files_are_merged) {
    std::string const type = "P= attlist(x= attspec(type=int;););";
    std::string const out = merged("{" + type + " p= P(x=1)}", "{" + type + " q= P(x=2)}");
    EXPECT_EQ(run({"get", "-", "p/x", "q/x"}, {.input = out}), (cRun{0, "1\n2\n", ""}));
    EXPECT_EQ(refused("{" + type + " p= P(x=1)}",
                      "{ m= {\n P= attlist(x= attspec(type=double;););}; q= P(x=2.5)}"),
              "s: error: type 'P' is declared with different content at s:2:5 and at t:1:5\n");
}

TEST_F(ToolMerge, a_choice_type_declared_in_both_files_is_merged) {
    std::string const type = "M= choice({off= 0; eco= 1; });",
                      file = "{" + type + " m= M(eco); }\n";
    EXPECT_EQ(merged(file, file), file);
    EXPECT_EQ(merged(file, "{b= 1; " + type + " m= M(off); c= {d= 2; }; }"),
              "{" + type + " m= M(off); b= 1; c= {d= 2; }; }\n");
    EXPECT_EQ(merged("{n= {" + type + " }; a= 1; }", "{n= {" + type + " x= 1; }; a= 2; }"),
              "{n= {" + type + " x= 1; }; a= 2; }\n");
    EXPECT_EQ(refused(file, "{M= choice({off= 0; eco= 2; }); m= M(off); }"),
              "s: error: type 'M' is declared with different content at s:1:5 and at t:1:5\n");
    EXPECT_EQ(refused(file, "{n= {" + type + " }; M= 5; }").substr(0, 22),
              "s:1:43: error: at /M: ");
}

TEST_F(ToolMerge, shared_values_are_merged) {
    EXPECT_EQ(merged("{a= {x= 1; }; b= #cRef(/a)}", "{b= {y= 2; }}"),
              "{a= {x= 1; y= 2; }; b= #cRef(/a); }\n");
    EXPECT_EQ(merged("{}", "{a= {x= 1; }; b= #cRef(/a)}"), "{a= {x= 1; }; b= #cRef(/a); }\n");
    std::string ladder = "{x0= {v= 1; };";
    for (int i = 1; i <= 64; ++i) {
        std::string const below = "#cRef(/x" + std::to_string(i - 1) + ")";
        ladder += " x" + std::to_string(i) + "= {a= " + below + "; b= " + below + "; };";
    }
    ladder += " }";
    EXPECT_EQ(merged(ladder, ladder), fmt(ladder).out);
}

TEST_F(ToolMerge, a_source_that_merges_too_much_is_refused) {
    std::string text = "{m= {v= [1, 2]; };";
    for (int i = 0; i < 40; ++i) text += " m= {v= #cRef(/m/v)};";
    cRun const run = merge("{}", text + "}");
    EXPECT_EQ(run.status, 2);
    EXPECT_EQ(run.out, "");
    EXPECT_NE(run.err.find("Too much merged"), std::string::npos) << run.err;
}

TEST_F(ToolMerge, one_of_the_inputs_may_be_the_standard_input) {
    write("f", "{a= 1}");
    EXPECT_EQ(run({"merge", "-", "f"}, {.input = "{b= 2}"}), (cRun{0, "{b= 2; a= 1}", ""}));
    EXPECT_EQ(run({"merge", "f", "-"}, {.input = "{b= 2} "}), (cRun{0, "{a= 1; b= 2}", ""}));
    EXPECT_EQ(run({"merge", "-", "-"}, {.input = "{b= 2}"}),
              (cRun{2, "", "-: error: only one of the two files can be the standard input\n"}));
    EXPECT_EQ(run({"merge", "-i", "f", "-"}, {.input = "{\n b= 2; // c\n}"}), (cRun{0, "", ""}));
    EXPECT_EQ(read("f"), "{a= 1;\n    b= 2 // c\n}");
}

TEST_F(ToolMerge, files_with_errors_are_refused) {
    EXPECT_EQ(refused("{a= 1}", "{a= foo(1)}").substr(0, 13), "s:1:5: error:");
    EXPECT_EQ(refused("{a= foo(1)}", "{a= 1}").substr(0, 13), "t:1:5: error:");
    EXPECT_EQ(refused("{a= 1}", "{b= 1} rest"),
              "s:1:8: error: text after the first value is not read\n");
    EXPECT_EQ(refused("{a= 1}", ""), "s: error: the file is empty\n");
    EXPECT_EQ(run({"merge", "t", "nowhere"}),
              (cRun{2, "", "nowhere: error: cannot read: No such file or directory\n"}));
}

TEST_F(ToolMerge, the_output_may_be_another_file) {
    EXPECT_EQ(merge("{a= 1}", "{b= 2}", {"-o", "o"}), (cRun{0, "", ""}));
    EXPECT_EQ(read("o"), "{a= 1; b= 2}");
    EXPECT_EQ(read("t"), "{a= 1}");
}

TEST_F(ToolMerge, a_file_assigned_to_itself_is_unchanged) {
    for (std::string const name : {"device.attr", "testplan.attr"}) {
        write_example(name);
        EXPECT_EQ(run({"merge", name, name, "--commands=-a-"}), (cRun{0, read(name), ""})) << name;
    }
}

TEST_F(ToolMerge, invalid_letters_are_refused) {
    auto const reported = [](std::string const &text) {
        return usage_error("merge", "--commands: " + text);
    };
    std::string const three = "three letters are needed, one for each class of keys";
    for (char const *commands : {"-x", "-xxx", "x"})
        EXPECT_EQ(merge("{}", "{}", {std::string("--commands=") + commands}), reported(three));
    EXPECT_EQ(merge("{}", "{}", {"--commands=axx"}),
              reported("'a' is not a letter for keys only in TARGET; the letters are -0?"));
    EXPECT_EQ(merge("{}", "{}", {"--commands=-bx"}),
              reported("'b' is not a letter for keys in both; the letters are -asx0?"));
    EXPECT_EQ(merge("{}", "{}", {"--commands=-x0"}),
              reported("'0' is not a letter for keys only in SOURCE; the letters are -sx?"));
}

} // namespace

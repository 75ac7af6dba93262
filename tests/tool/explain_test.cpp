// `explain`: the information about one value.

#include "tests/tool/tool_run.h"

using tool_test::cRun;
using tool_test::times;

namespace {

class ToolExplain : public tool_test::Tool {
  protected:
    cRun explain(std::string const &bytes, std::string const &path) const {
        write("f", bytes);
        return run({"explain", "f", path});
    }
    // The command succeeds and prints this.
    std::string reported(std::string const &bytes, std::string const &path) const {
        cRun const run = explain(bytes, path);
        EXPECT_EQ(run.status, 0);
        EXPECT_EQ(run.err, "");
        return run.out;
    }
};

std::string const declared =
    "{\n"
    "  Mode= choice({a= 1; b= 2; }); // modes\n"
    "  Pixel= attlist(x= attspec(type= int; flag= #REQUIRED); y= attspec(default= 0);\n"
    "    z= attspec(type= int; flag= #IMPLIED));\n"
    "  p= Pixel(x= 3); // of the preamp\n"
    "  q= #cRef(/p);\n"
    "  m= Mode(b);\n"
    "  n= Mode();\n"
    "  F= attlist(f= attspec(default= 5; flag= #FIXED));\n"
    "}\n";

TEST_F(ToolExplain, scalars_have_a_type_and_a_value) {
    EXPECT_EQ(reported("{a= 5; // five\n b= 'x'}", "a"), "path      /a\n"
                                                         "type      int\n"
                                                         "place     1:5\n"
                                                         "comment   // five\n");
    EXPECT_EQ(reported("{a= 5; // five\n b= 'x'}", "/ b"), "path      /b\n"
                                                           "type      string\n"
                                                           "place     2:5\n");
}

TEST_F(ToolExplain, constants_have_a_name_and_are_not_shared) {
    EXPECT_EQ(reported("{a= #nil; b= #nil}", "b"), "path      /b\n"
                                                   "type      niltype\n"
                                                   "constant  #nil\n"
                                                   "place     1:14\n");
    EXPECT_EQ(reported("{a= [#true, #true]}", "a/1"), "path      /a/1\n"
                                                      "type      bool\n"
                                                      "constant  #true\n"
                                                      "place     1:13\n");
}

TEST_F(ToolExplain, containers_have_entries_and_a_layout) {
    EXPECT_EQ(reported("{a= {x=1; y=2};\nb= [\n1\n]; c= <>}", "a"), "path      /a\n"
                                                                    "type      map\n"
                                                                    "place     1:5\n"
                                                                    "entries   2\n"
                                                                    "layout    one line\n");
    EXPECT_EQ(reported("{a= {x=1; y=2};\nb= [\n1\n]; c= <>}", "b"), "path      /b\n"
                                                                    "type      vector\n"
                                                                    "place     2:4\n"
                                                                    "entries   1\n"
                                                                    "layout    many lines\n");
    EXPECT_EQ(reported("{a= {x=1; y=2};\nb= [\n1\n]; c= <>}", "c"), "path      /c\n"
                                                                    "type      set\n"
                                                                    "place     4:7\n"
                                                                    "entries   0\n"
                                                                    "layout    one line\n");
}

TEST_F(ToolExplain, keys_that_are_not_words_are_quoted) {
    EXPECT_EQ(reported("{'two words'= 7}", "'two words'"), "path      /\"two words\"\n"
                                                           "type      int\n"
                                                           "place     1:15\n");
    EXPECT_EQ(reported("{8= y}", "0x8"), "path      /8\ntype      string\nplace     1:5\n");
    EXPECT_EQ(reported("{'a/b'= {1.5= z}}", "\"a/b\"/1.50"), "path      /\"a/b\"/1.50000\n"
                                                             "type      string\n"
                                                             "place     1:15\n");
    EXPECT_EQ(reported("{'x\\\ny'= 1}", "'x\\\ny'"), "path      /\"x\\\\x0ay\"\n"
                                                     "type      int\n"
                                                     "place     2:5\n")
        << "a line feed in a key is written as \\x0a";
}

TEST_F(ToolExplain, each_line_of_a_comment_is_printed) {
    EXPECT_EQ(reported("{a= 1; // one\n  /* two\n   three */\n b= 2}", "a"),
              "path      /a\n"
              "type      int\n"
              "place     1:5\n"
              "comment   // one\n"
              "comment   /* two\n"
              "comment   three */\n");
}

TEST_F(ToolExplain, the_last_of_equal_keys_counts) {
    EXPECT_EQ(reported("{a= 1; a= 2}", "a"), "path      /a\ntype      int\nplace     1:11\n");
}

TEST_F(ToolExplain, values_already_in_a_set_are_not_counted) {
    EXPECT_EQ(reported("{s= <16, 0x10, b>}", "s/1"),
              "path      /s/1\ntype      string\nplace     1:16\n");
    EXPECT_EQ(reported("{s= <[1], [1], b>}", "s/0"), "path      /s/0\n"
                                                     "type      vector\n"
                                                     "place     1:6\n"
                                                     "entries   1\n"
                                                     "layout    one line\n");
    EXPECT_EQ(reported("{s= <[1], [1], b>}", "s/1"),
              "path      /s/1\ntype      string\nplace     1:16\n");
}

// --- declared types ---

TEST_F(ToolExplain, rules_of_attributes_are_printed) {
    EXPECT_EQ(reported(declared, "p/x"), "path      /p/x\n"
                                         "type      int\n"
                                         "place     5:15\n"
                                         "rule      required, only int (declared at /Pixel/x)\n"
                                         "default   none\n"
                                         "shared    /q/x\n");
    EXPECT_EQ(reported(declared, "q/y"), "path      /q/y\n"
                                         "type      int\n"
                                         "rule      any type (declared at /Pixel/y)\n"
                                         "default   0\n"
                                         "shared    /p/y\n");
    EXPECT_EQ(reported(declared, "p/z"), "path      /p/z\n"
                                         "type      niltype\n"
                                         "constant  #nil\n"
                                         "rule      implied, only int (declared at /Pixel/z)\n"
                                         "default   none\n");
}

TEST_F(ToolExplain, objects_show_where_their_type_is_declared) {
    EXPECT_EQ(reported(declared, "p"), "path      /p\n"
                                       "type      Pixel (declared at /Pixel)\n"
                                       "place     5:6\n"
                                       "entries   3\n"
                                       "layout    many lines\n"
                                       "comment   // of the preamp\n"
                                       "shared    /q\n");
}

TEST_F(ToolExplain, choices_are_listed) {
    EXPECT_EQ(reported(declared, "m"), "path      /m\n"
                                       "type      Mode (declared at /Mode)\n"
                                       "place     7:6\n"
                                       "choice    b\n"
                                       "choices   a, b\n");
    EXPECT_EQ(reported(declared, "n"), "path      /n\n"
                                       "type      Mode (declared at /Mode)\n"
                                       "place     8:6\n"
                                       "choice    none\n"
                                       "choices   a, b\n");
    EXPECT_EQ(reported("{E= choice({}); e= E()}", "e"), "path      /e\n"
                                                        "type      E (declared at /E)\n"
                                                        "place     1:20\n"
                                                        "choice    none\n"
                                                        "choices   none\n");
}

TEST_F(ToolExplain, many_choices_are_shortened) {
    std::string text = "{M= choice({";
    for (int i = 0; i < 5000; ++i) text += "key_number_" + std::to_string(i) + "= 1;";
    std::string const out = reported(text + "}); m= M(key_number_7)}", "m");
    EXPECT_NE(out.find("choices   key_number_0, key_number_1, "), std::string::npos) << out;
    EXPECT_NE(out.find(" ... "), std::string::npos) << out;
    EXPECT_LT(out.size(), 600u);
}

TEST_F(ToolExplain, types_and_specifications_are_explained) {
    EXPECT_EQ(reported(declared, "Mode"), "path      /Mode\n"
                                          "type      choice\n"
                                          "name      Mode\n"
                                          "place     2:9\n"
                                          "entries   2\n"
                                          "layout    one line\n"
                                          "comment   // modes\n");
    EXPECT_EQ(reported(declared, "Pixel"), "path      /Pixel\n"
                                           "type      attlist\n"
                                           "name      Pixel\n"
                                           "place     3:10\n"
                                           "entries   3\n"
                                           "layout    many lines\n");
    EXPECT_EQ(reported(declared, "Pixel/x"), "path      /Pixel/x\n"
                                             "type      attspec\n"
                                             "place     3:21\n"
                                             "rule      required, only int\n"
                                             "default   none\n");
    EXPECT_EQ(reported(declared, "F/f"), "path      /F/f\n"
                                         "type      attspec\n"
                                         "place     9:17\n"
                                         "rule      fixed, any type\n"
                                         "default   5\n");
    EXPECT_EQ(reported(declared, "Pixel/x/type"), "path      /Pixel/x/type\n"
                                                  "type      type\n"
                                                  "name      int\n");
    EXPECT_EQ(reported(declared, "Mode/b"), "path      /Mode/b\ntype      int\nplace     2:26\n");
}

TEST_F(ToolExplain, positions_inside_typed_values_are_in_the_file) {
    EXPECT_EQ(reported(declared, "q/x"), "path      /q/x\n"
                                         "type      int\n"
                                         "place     5:15\n"
                                         "rule      required, only int (declared at /Pixel/x)\n"
                                         "default   none\n"
                                         "shared    /p/x\n");
    EXPECT_EQ(reported("{s= <{1= a}, [1], b>}", "s/1"), "path      /s/1\n"
                                                        "type      vector\n"
                                                        "place     1:14\n"
                                                        "entries   1\n"
                                                        "layout    one line\n");
}

// --- sharing ---

TEST_F(ToolExplain, below_a_reference_the_position_is_that_of_the_target) {
    EXPECT_EQ(reported("{a= {x= 1};\n b= #cRef(/a)}", "b"), "path      /b\n"
                                                            "type      map\n"
                                                            "place     2:5\n"
                                                            "entries   1\n"
                                                            "layout    one line\n"
                                                            "shared    /a\n");
    EXPECT_EQ(reported("{a= {x= 1};\n b= #cRef(/a)}", "b/x"), "path      /b/x\n"
                                                              "type      int\n"
                                                              "place     1:9\n"
                                                              "shared    /a/x\n");
}

// Further paths are printed as "and more".
TEST_F(ToolExplain, up_to_eight_shared_paths_are_printed) {
    std::string text = "{a= 1";
    std::string out = "path      /a\ntype      int\nplace     1:5\n";
    for (int i = 0; i < 8; ++i) {
        text += "; b" + std::to_string(i) + "= #cRef(/a)";
        out += "shared    /b" + std::to_string(i) + "\n";
    }
    EXPECT_EQ(reported(text + "}", "a"), out);
    EXPECT_EQ(reported(text + "; c= #cRef(/a)}", "a"), out + "shared    and more\n");
}

// The value has 2 to the power of 60 paths.
TEST_F(ToolExplain, a_value_may_have_more_paths_than_can_be_counted) {
    std::string text = "{m0= {x= 1}";
    for (int i = 1; i <= 60; ++i) {
        std::string const below = "#cRef(/m" + std::to_string(i - 1) + ")";
        text += "; m" + std::to_string(i) + "= {a= " + below + "; b= " + below + "}";
    }
    std::string out = "path      /m0/x\ntype      int\nplace     1:10\n";
    for (size_t i = 1; i <= 8; ++i)
        out += "shared    /m" + std::to_string(i) + times("/a", i) + "/x\n";
    EXPECT_EQ(reported(text + "}", "m0/x"), out + "shared    and more\n");
}

// The text is not nested, but the value is a long chain.
TEST_F(ToolExplain, values_may_be_nested_deeper_than_text) {
    std::string text = "{m0= {}";
    for (int i = 1; i < 20000; ++i) text += "; m" + std::to_string(i) + "= {}";
    for (int i = 1; i < 20000; ++i)
        text += "; m" + std::to_string(i - 1) + "= {n= #cRef(/m" + std::to_string(i) + ")}";
    cRun const run = explain(text + "}", "m19999");
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.err, "");
    EXPECT_NE(run.out.find("entries   0\n"
                           "layout    one line\n"
                           "shared    /m19998/n\n"
                           "shared    /m19997/n/n\n"),
              std::string::npos)
        << run.out.substr(0, 400);
}

// --- absent values ---

TEST_F(ToolExplain, absent_values_and_invalid_paths_are_reported_as_by_get) {
    for (std::string const path : {"c", "c/d", "a/1", "b/x", "", "a/", "=", "a/ /"}) {
        cRun const run = explain("{a= [1]; b= 5}", path);
        EXPECT_EQ(run, this->run({"get", "f", path})) << path;
        EXPECT_NE(run.status, 0) << path;
    }
    EXPECT_EQ(explain("{a= 1}", "c"), (cRun{1, "", "f: error: nothing at path 'c'\n"}));
}

TEST_F(ToolExplain, a_file_with_errors_prints_nothing) {
    cRun const unclean = explain("{a=1;b=foo(2)}", "a");
    EXPECT_EQ(unclean, run({"get", "f", "a"}));
    EXPECT_EQ(unclean.status, 2);
    EXPECT_EQ(unclean.out, "");
    EXPECT_EQ(run({"explain", "nowhere", "a"}),
              (cRun{2, "", "nowhere: error: cannot read: No such file or directory\n"}));
    EXPECT_EQ(run({"explain", "-", "a"}, {.input = "{a=1}"}),
              (cRun{0, "path      /a\ntype      int\nplace     1:4\n", ""}));
}

// The example of the help text.
TEST_F(ToolExplain, a_real_file_is_explained) {
    write_example("device.attr");
    EXPECT_EQ(run({"explain", "device.attr", "sensors/0/calibration"}),
              (cRun{0,
                    "path      /sensors/0/calibration\n"
                    "type      map\n"
                    "place     69:24\n"
                    "entries   6\n"
                    "layout    many lines\n"
                    "comment   // calibration shared by all sensors of this make\n"
                    "shared    /pt100\n"
                    "shared    /sensors/1/calibration\n"
                    "shared    /sensors/2/calibration\n",
                    ""}));
    EXPECT_NE(run({"explain", "--help"}).out.find("qrv explain device.attr sensors/0/calibration"),
              std::string::npos);
}

} // namespace

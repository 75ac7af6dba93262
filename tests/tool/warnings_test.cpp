// Warnings of `check`, and the losses that `fmt -i` reports.

#include "tests/tool/tool_run.h"

#include <map>
#include <random>
#include <regex>
#include <set>
#include <sstream>
#include <utility>

using tool_test::cRun;
using tool_test::times;
using tool_test::usage_error;

namespace {

class ToolWarnings : public tool_test::Tool {
  protected:
    // The reports of `check` for these texts, in one process, without the file name: 3:5: error...
    // Each text is preceded by an extra line.
    std::string checked(std::vector<std::string> const &texts,
                        std::vector<std::string> const &options = {}) const {
        std::vector<std::string> arguments = {"check"};
        arguments.insert(arguments.end(), options.begin(), options.end());
        for (size_t i = 0; i < texts.size(); ++i) {
            write(std::to_string(i), texts[i]);
            arguments.push_back(std::to_string(i));
        }
        std::string const all = run(arguments).err;
        std::string reported, line;
        size_t last = texts.size();
        for (std::istringstream is(all); std::getline(is, line);) {
            size_t const number = std::stoul(line);
            if (std::exchange(last, number) != number) reported += texts.at(number) + "\n";
            reported += "  " + line.substr(line.find(':') + 1) + "\n";
        }
        return reported;
    }
};

std::string const again = " [duplicate-key]\n";

TEST_F(ToolWarnings, a_warning_goes_to_standard_error_and_is_not_a_finding) {
    EXPECT_EQ(run_on("{\n  a= 1;\n  a= 2;\n}\n", {"check"}),
              (cRun{0, "",
                    "f:3:3: warning: key 'a' is repeated [duplicate-key]\n"
                    "f:2:3: note: it is first here\n"}));
}

// --- repeated keys ---

TEST_F(ToolWarnings, each_further_occurrence_of_a_key_is_repeated) {
    EXPECT_EQ(checked({"{a=1; b=2; a=3; a=1}"}), "{a=1; b=2; a=3; a=1}\n"
                                                 "  1:12: warning: key 'a' is repeated" +
                                                     again +
                                                     "  1:2: note: it is first here\n"
                                                     "  1:17: warning: key 'a' is repeated" +
                                                     again + "  1:2: note: it is first here\n");
}

TEST_F(ToolWarnings, keys_are_compared_as_they_are_read) {
    EXPECT_EQ(checked({"{a=1; \"a\"=2}", "{'a b'=1; \"a\\ b\"=2}", "{5=1; 0x5=2}", "{5=1; +5=2}",
                       "{0xFFFFFFFF=1; -1=2}", "{1.5=1; 1.5=2}", "{5=1; \"5\"=2; 5.5=3; five=4}",
                       "{a=1; A=2}"}),
              "{a=1; \"a\"=2}\n"
              "  1:7: warning: key \"a\" is repeated" +
                  again +
                  "  1:2: note: it is first here\n"
                  "{'a b'=1; \"a\\ b\"=2}\n"
                  "  1:11: warning: key \"a\\ b\" is repeated" +
                  again +
                  "  1:2: note: it is first here\n"
                  "  1:13: warning: unknown escape \\ : it is read as  ; write \\\\ for a \\ "
                  "[unknown-escape]\n"
                  "{5=1; 0x5=2}\n"
                  "  1:7: warning: key '0x5' is repeated" +
                  again +
                  "  1:2: note: it is first here\n"
                  "{5=1; +5=2}\n"
                  "  1:7: warning: key '+5' is repeated" +
                  again +
                  "  1:2: note: it is first here\n"
                  "{0xFFFFFFFF=1; -1=2}\n"
                  "  1:2: warning: 0xFFFFFFFF has more than 31 bits: it is read as -1 "
                  "[wrapped-number]\n"
                  "  1:16: warning: key '-1' is repeated" +
                  again +
                  "  1:2: note: it is first here\n"
                  "{1.5=1; 1.5=2}\n"
                  "  1:9: warning: key '1.5' is repeated" +
                  again + "  1:2: note: it is first here\n");
}

TEST_F(ToolWarnings, keys_of_other_maps_are_not_repeated) {
    EXPECT_EQ(checked({"{a={a=1;}; b={a=1;}; c=[{a=1;}, {a=1;}];}", "[{a=1;}, {a=2;}]"}), "");
}

TEST_F(ToolWarnings, a_key_that_replaces_a_value_of_another_kind_is_repeated) {
    std::string const one = "  1:2: note: it is first here\n";
    EXPECT_EQ(checked({"{a=1; a={x=2;};}", "{a={x=2;}; a=1}", "{a=[1]; a=[2]}", "{a=[1]; a=<2>}",
                       "{a={x=1;}; a=5; a={x=2;}}"}),
              "{a=1; a={x=2;};}\n  1:7: warning: key 'a' is repeated" + again + one +
                  "{a={x=2;}; a=1}\n  1:12: warning: key 'a' is repeated" + again + one +
                  "{a=[1]; a=[2]}\n  1:9: warning: key 'a' is repeated" + again + one +
                  "{a=[1]; a=<2>}\n  1:9: warning: key 'a' is repeated" + again + one +
                  "{a={x=1;}; a=5; a={x=2;}}\n  1:12: warning: key 'a' is repeated" + again + one +
                  "  1:17: warning: key 'a' is repeated" + again + one);
}

TEST_F(ToolWarnings, continuing_a_map_or_set_is_not_a_repetition) {
    EXPECT_EQ(checked({"{a={x=1;}; a={y=2;}; a={z={p=1;};}; a={z={q=1;};};}", "{a=<1>; a=<2>}",
                       "{a={}; a={}}", "{a={v=[1];}; a={v=[2];}}", "{a={v=<1>;}; a={v=<1>;}}"}),
              "");
}

TEST_F(ToolWarnings, a_set_does_not_continue_a_map) {
    EXPECT_EQ(checked({"{a={x=1;}; a=<5>}", "{a=<5>; a={x=1;}}", "{a={v={};}; a={v=<5>;}}"}),
              "{a={x=1;}; a=<5>}\n  1:12: warning: key 'a' is repeated" + again +
                  "  1:2: note: it is first here\n"
                  "{a=<5>; a={x=1;}}\n  1:9: warning: key 'a' is repeated" +
                  again +
                  "  1:2: note: it is first here\n"
                  "{a={v={};}; a={v=<5>;}}\n  1:16: warning: key 'v' is repeated" +
                  again + "  1:5: note: it is first here\n");
}

TEST_F(ToolWarnings, keys_may_be_repeated_in_a_continued_map) {
    EXPECT_EQ(checked({"{a={x=1;};\n a={x=2;};}", "{a={z={p=1;};};\n a={z={p=2;};};}",
                       "{a={v=[1];}; a={v=[2]; v=[3];}}", "{a={x=1;}; a={x=2; x=3;}}",
                       "{a={v={p=1;};}; a={v=5;}}"}),
              "{a={x=1;};\n a={x=2;};}\n  2:5: warning: key 'x' is repeated" + again +
                  "  1:5: note: it is first here\n"
                  "{a={z={p=1;};};\n a={z={p=2;};};}\n  2:8: warning: key 'p' is repeated" +
                  again +
                  "  1:8: note: it is first here\n"
                  "{a={v=[1];}; a={v=[2]; v=[3];}}\n  1:24: warning: key 'v' is repeated" +
                  again +
                  "  1:17: note: it is first here\n"
                  "{a={x=1;}; a={x=2; x=3;}}\n  1:15: warning: key 'x' is repeated" +
                  again + "  1:5: note: it is first here\n  1:20: warning: key 'x' is repeated" +
                  again +
                  "  1:15: note: it is first here\n"
                  "{a={v={p=1;};}; a={v=5;}}\n"
                  "  1:20: warning: key 'v' is repeated, and this value is ignored" +
                  again + "  1:5: note: it is first here\n");
}

// The merged entries are written elsewhere, so a person does not see the repetition.
TEST_F(ToolWarnings, a_reference_to_a_map_does_not_continue_one) {
    EXPECT_EQ(checked({"{a={x=1;}; b={x=2;}; b=#cRef(/a)}"}),
              "{a={x=1;}; b={x=2;}; b=#cRef(/a)}\n  1:22: warning: key 'b' is repeated" + again +
                  "  1:12: note: it is first here\n");
}

TEST_F(ToolWarnings, keys_may_be_repeated_inside_typed_values) {
    EXPECT_EQ(checked({"{P= attlist(x= attspec(type= int; type= double;););\n"
                       "p= P(x= 1.0; x= 2.0);\np= P(x= 3.0);}",
                       "{M= choice({a= 1; a= 2;});}"}),
              "{P= attlist(x= attspec(type= int; type= double;););\n"
              "p= P(x= 1.0; x= 2.0);\np= P(x= 3.0);}\n"
              "  1:35: warning: key 'type' is repeated" +
                  again +
                  "  1:24: note: it is first here\n"
                  "  2:14: warning: key 'x' is repeated" +
                  again +
                  "  2:6: note: it is first here\n"
                  "  3:1: warning: key 'p' is repeated" +
                  again +
                  "  2:1: note: it is first here\n"
                  "{M= choice({a= 1; a= 2;});}\n"
                  "  1:19: warning: key 'a' is repeated" +
                  again + "  1:13: note: it is first here\n");
}

// --- literals ---

TEST_F(ToolWarnings, known_escapes_are_not_reported) {
    EXPECT_EQ(checked({R"({a= "\\ \" \'"; b= '\\ \" \''; "\"k\\"= "C:\\temp"; })", "\"x\\\ny\"",
                       "{a=1; // \"\\q\"\n b=2; /* \"\\q\" */ }", "\"\\\\q\"", "'/* \\\\ */ //'"}),
              "");
}

TEST_F(ToolWarnings, an_unknown_escape_is_reported_once_for_each_string) {
    EXPECT_EQ(checked({R"({a= "\n\t"; "C:\temp"= 'a\qb'; s= string( /* \x */ "\q"); })",
                       "[\"one\\\ntwo \\q\"]", "\"\\\xC3\xA9\""}),
              R"({a= "\n\t"; "C:\temp"= 'a\qb'; s= string( /* \x */ "\q"); })"
              "\n"
              R"(  1:6: warning: unknown escape \n: it is read as n; write \\ for a \ )"
              "[unknown-escape]\n"
              R"(  1:16: warning: unknown escape \t: it is read as t; write \\ for a \ )"
              "[unknown-escape]\n"
              R"(  1:26: warning: unknown escape \q: it is read as q; write \\ for a \ )"
              "[unknown-escape]\n"
              R"(  1:53: warning: unknown escape \q: it is read as q; write \\ for a \ )"
              "[unknown-escape]\n"
              "[\"one\\\ntwo \\q\"]\n"
              R"(  2:5: warning: unknown escape \q: it is read as q; write \\ for a \ )"
              "[unknown-escape]\n"
              "\"\\\xC3\xA9\"\n"
              "  1:2: warning: unknown escape \\\xC3\xA9: it is read as \xC3\xA9; write \\\\ for "
              "a \\ [unknown-escape]\n");
}

TEST_F(ToolWarnings, leading_zeros_are_reported) {
    EXPECT_EQ(checked({"[0, -0, +0, 0u, 10, 100, 0.5, 00.5, 0x0, 0x007, 7, \"007\"]", "intf(007)",
                       "{a007= b007}"}),
              "");
    EXPECT_EQ(checked({"[007, 00, -007, +007, 007u, int(010)]", "{007= 1}"}),
              "[007, 00, -007, +007, 007u, int(010)]\n"
              "  1:2: warning: leading zeros have no effect: 007 is read as 7 [leading-zero]\n"
              "  1:7: warning: leading zeros have no effect: 00 is read as 0 [leading-zero]\n"
              "  1:11: warning: leading zeros have no effect: -007 is read as -7 [leading-zero]\n"
              "  1:17: warning: leading zeros have no effect: +007 is read as 7 [leading-zero]\n"
              "  1:23: warning: leading zeros have no effect: 007u is read as 7 [leading-zero]\n"
              "  1:33: warning: leading zeros have no effect: 010 is read as 10 [leading-zero]\n"
              "{007= 1}\n"
              "  1:2: warning: leading zeros have no effect: 007 is read as 7 [leading-zero]\n");
}

TEST_F(ToolWarnings, numbers_that_wrap_are_reported) {
    EXPECT_EQ(checked({"[0x7FFFFFFF, 0X7fffffff, 0x00000000007F, 2147483647, 2147483647u, -5u, "
                       "-2147483648u, -2147483648]",
                       "intf(0xFFFFFFFF)"}),
              "");
    EXPECT_EQ(checked({"[0x80000000, 0xFFFFFFFF, 2147483648u, 4294967295U, -2147483649u]"}),
              "[0x80000000, 0xFFFFFFFF, 2147483648u, 4294967295U, -2147483649u]\n"
              "  1:2: warning: 0x80000000 has more than 31 bits: it is read as -2147483648 "
              "[wrapped-number]\n"
              "  1:14: warning: 0xFFFFFFFF has more than 31 bits: it is read as -1 "
              "[wrapped-number]\n"
              "  1:26: warning: 2147483648u has more than 31 bits: it is read as -2147483648 "
              "[wrapped-number]\n"
              "  1:39: warning: 4294967295U has more than 31 bits: it is read as -1 "
              "[wrapped-number]\n"
              "  1:52: warning: -2147483649u has more than 31 bits: it is read as 2147483647 "
              "[wrapped-number]\n");
}

TEST_F(ToolWarnings, numbers_that_are_errors_get_no_warning) {
    for (std::string const number : {"2147483648", "4294967296u", "0x100000000", "099999999999"}) {
        std::string const reported = checked({"{a= " + number + "}"});
        EXPECT_NE(reported.find("error: Failed to read value"), std::string::npos) << reported;
        EXPECT_EQ(reported.find("warning"), std::string::npos) << reported;
    }
}

// --- lists ---

TEST_F(ToolWarnings, repeated_members_of_a_set_are_reported) {
    EXPECT_EQ(checked({"<1, 2, \"1\", 1.5>", "[1, 1, [1, 1]]", "{a= <1>; b= <1>}"}), "");
    EXPECT_EQ(checked({"<1, 2, 1, 0x1>", "<a, \"a\">", "<[1, 2], {x=1;}, [1, 2], {x=1;}>",
                       "{a= [<b, b>]}"}),
              "<1, 2, 1, 0x1>\n"
              "  1:8: warning: the set has this value already [duplicate-member]\n"
              "  1:2: note: it is first here\n"
              "  1:11: warning: the set has this value already [duplicate-member]\n"
              "  1:2: note: it is first here\n"
              "<a, \"a\">\n"
              "  1:5: warning: the set has this value already [duplicate-member]\n"
              "  1:2: note: it is first here\n"
              "<[1, 2], {x=1;}, [1, 2], {x=1;}>\n"
              "  1:18: warning: the set has this value already [duplicate-member]\n"
              "  1:2: note: it is first here\n"
              "  1:26: warning: the set has this value already [duplicate-member]\n"
              "  1:10: note: it is first here\n"
              "{a= [<b, b>]}\n"
              "  1:10: warning: the set has this value already [duplicate-member]\n"
              "  1:7: note: it is first here\n");
}

TEST_F(ToolWarnings, empty_items_are_reported) {
    EXPECT_EQ(checked({"[]", "[1,]", "[1, 2;]", "<1; 2>", "[[1] /*,*/ , // ,\n 2]", "[[], <>, {}]",
                       "{a= 1;; b= 2}"}),
              "");
    EXPECT_EQ(checked({"[1,,2]", "[,1]", "[1,,]", "[,]", "<1; ; 2>", "{a= [1, /* , */ ; 2]}",
                       "[1 // ,\n, ,2]"}),
              "[1,,2]\n  1:4: warning: no item is before this ',' [empty-item]\n"
              "[,1]\n  1:2: warning: no item is before this ',' [empty-item]\n"
              "[1,,]\n  1:4: warning: no item is before this ',' [empty-item]\n"
              "[,]\n  1:2: warning: no item is before this ',' [empty-item]\n"
              "<1; ; 2>\n  1:5: warning: no item is before this ';' [empty-item]\n"
              "{a= [1, /* , */ ; 2]}\n  1:17: warning: no item is before this ';' [empty-item]\n"
              "[1 // ,\n, ,2]\n  2:3: warning: no item is before this ',' [empty-item]\n");
}

TEST_F(ToolWarnings, separators_with_an_error_get_no_warning) {
    EXPECT_EQ(checked({"[1,,,2]", "[,,1]", "[[1],,2]"}),
              "[1,,,2]\n  1:5: error: Unnecessary separator: , [0x40000007]\n"
              "[,,1]\n  1:3: error: Unnecessary separator: , [0x40000007]\n"
              "[[1],,2]\n  1:6: error: Unnecessary separator: , [0x40000007]\n");
}

TEST_F(ToolWarnings, decimal_commas_are_reported) {
    EXPECT_EQ(checked({"[1,5]", "[1,5, 2,5]", "[1, 5; 2, 5]", "[a,b; c]", "{a= 1,5= 2; }",
                       "[1.5; 2]", "[[1,5]; [2,5]]", "[1,5;]", "[1,5,2; 2,5,7]", "[7; 1,5,2]"}),
              "");
    EXPECT_EQ(checked({"[1,5; 2,5]", "<7; -1,5>"}),
              "[1,5; 2,5]\n  1:2: warning: 1,5 is two numbers: write a decimal point "
              "[decimal-comma]\n"
              "<7; -1,5>\n  1:5: warning: -1,5 is two numbers: write a decimal point "
              "[decimal-comma]\n");
}

TEST_F(ToolWarnings, consequences_of_an_error_get_no_warning) {
    EXPECT_EQ(checked({"{d= 2024-05-01; }"}),
              "{d= 2024-05-01; }\n"
              "  1:5: error: Missing delimiter after value: 2024 [0x40000002]\n"
              "  1:5: note: write a date in quotes: \"2024-05-01\"\n"
              "  1:5: note: 2 more errors follow from it\n");
    EXPECT_NE(checked({"{a= b c; d= 007; }"}).find("[leading-zero]"), std::string::npos);
    for (char const *text : {"{v= [1 007]; }", "{s= <1, 1; }", "{v= [1,5; 2; }"}) {
        std::string const found = checked({text});
        EXPECT_NE(found.find("error: "), found.npos) << text;
        EXPECT_EQ(found.find("warning: "), found.npos) << found;
    }
}

TEST_F(ToolWarnings, brackets_of_two_kinds_are_reported) {
    EXPECT_EQ(checked({"vector[1]", "{v= intf(1); t= string(a)}"}), "");
    EXPECT_EQ(checked({"{v= vector(1]; }", "map(a= 1;}", "[set(1 /*>*/ >]"}),
              "{v= vector(1]; }\n"
              "  1:13: warning: this ] closes a round bracket: write [ ... ] [mixed-brackets]\n"
              "  1:11: note: it is opened here\n"
              "map(a= 1;}\n"
              "  1:10: warning: this } closes a round bracket: write { ... } [mixed-brackets]\n"
              "  1:4: note: it is opened here\n"
              "[set(1 /*>*/ >]\n"
              "  1:14: warning: this > closes a round bracket: write < ... > [mixed-brackets]\n"
              "  1:5: note: it is opened here\n");
}

TEST_F(ToolWarnings, comments_inside_comments_are_reported) {
    EXPECT_EQ(checked({"1 /* a /* b */", "1 /* src/*.c\n src/*.h */", "{a= \"/*\"; b= \"= /*\"}",
                       "1 // /*\n // = /* \n", "1 /* a= 1 */ /* b */"}),
              "");
    EXPECT_EQ(checked({"{a= 1; /* b\n c= 1; /* d */ }", "{a= 1; /* b= 2; /* c */ }"}),
              "{a= 1; /* b\n c= 1; /* d */ }\n"
              "  2:8: warning: this is inside another comment [comment-inside]\n"
              "  1:8: note: that comment begins here\n"
              "{a= 1; /* b= 2; /* c */ }\n"
              "  1:17: warning: this is inside another comment [comment-inside]\n"
              "  1:8: note: that comment begins here\n");
}

// --- words ---

TEST_F(ToolWarnings, words_that_look_like_other_types_are_reported_on_request) {
    std::string const text = "{a= yes; b= [True, OFF, null, NaN]; c= true; d= \"no\"; no= 1; "
                             "M= choice({on= 1;}); m= M(on); e= string(yes); f= nothing}";
    EXPECT_EQ(checked({text}), "");
    EXPECT_EQ(checked({text}, {"-W", "strings"}),
              text + "\n"
                     "  1:5: warning: yes is a string, not true: quotes make that clear [strings]\n"
                     "  1:14: warning: True is a string, not true: quotes make that clear "
                     "[strings]\n"
                     "  1:20: warning: OFF is a string, not false: quotes make that clear "
                     "[strings]\n"
                     "  1:25: warning: null is a string, not #nil: quotes make that clear "
                     "[strings]\n"
                     "  1:31: warning: NaN is a string, not a number: quotes make that clear "
                     "[strings]\n");
}

// --- the option ---

std::string const doubtful = "{a= 1; a= 01; b= yes}";
std::string const repeated = "key 'a' is repeated [duplicate-key]\nf:1:2: note: it is first here\n";
std::string const zero = "leading zeros have no effect: 01 is read as 1 [leading-zero]\n";

TEST_F(ToolWarnings, all_warnings_or_one_can_be_errors) {
    EXPECT_EQ(run_on(doubtful, {"check", "-W", "error"}),
              (cRun{1, "", "f:1:8: error: " + repeated + "f:1:11: error: " + zero}));
    for (std::vector<std::string> const &form :
         {std::vector<std::string>{"-W", "error=leading-zero"}, {"-Werror=leading-zero"}}) {
        std::vector<std::string> arguments = {"check"};
        arguments.insert(arguments.end(), form.begin(), form.end());
        EXPECT_EQ(run_on(doubtful, arguments),
                  (cRun{1, "", "f:1:8: warning: " + repeated + "f:1:11: error: " + zero}));
    }
    EXPECT_EQ(run_on(doubtful, {"check", "-W", "error=empty-item"}).status, 0);
    EXPECT_EQ(run_on(doubtful, {"check", "-W", "error=strings", "-W", "no-duplicate-key"}),
              (cRun{1, "",
                    "f:1:11: warning: " + zero +
                        "f:1:18: error: yes is a string, not true: quotes make that clear "
                        "[strings]\n"}));
}

TEST_F(ToolWarnings, the_last_option_about_a_warning_counts) {
    EXPECT_EQ(run_on(doubtful, {"check", "-W", "no-duplicate-key", "-W", "no-leading-zero"}),
              (cRun{0, "", ""}));
    EXPECT_EQ(run_on(doubtful, {"check", "-W", "error=duplicate-key", "-W", "no-duplicate-key",
                                "-W", "no-leading-zero"}),
              (cRun{0, "", ""}));
    EXPECT_EQ(run_on(doubtful, {"check", "-W", "no-duplicate-key", "-W", "duplicate-key", "-W",
                                "no-leading-zero"}),
              (cRun{0, "", "f:1:8: warning: " + repeated}));
    EXPECT_EQ(run_on(doubtful, {"check", "-W", "no-leading-zero", "-W", "error"}),
              (cRun{1, "", "f:1:8: error: " + repeated}));
}

TEST_F(ToolWarnings, unknown_names_are_usage_errors) {
    std::pair<std::string, std::string> const wrong[] = {
        {"dublicate-key", "unknown warning 'dublicate-key'; did you mean 'duplicate-key'?"},
        {"no-empty-items", "unknown warning 'empty-items'; did you mean 'empty-item'?"},
        {"error=string", "unknown warning 'string'; did you mean 'strings'?"},
        {"no-error", "unknown warning 'error'"},
        {"all", "unknown warning 'all'"},
        {"error=", "unknown warning ''"},
        {"no-", "unknown warning ''"}};
    for (auto const &[form, text] : wrong)
        EXPECT_EQ(run_on("1", {"check", "-W", form}), usage_error("check", "-W: " + text));
    EXPECT_EQ(run({"check", "-W"}).status, 2);
}

TEST_F(ToolWarnings, errors_and_warnings_are_limited_separately) {
    std::string const text = "{a=1; a=2; a=3; b=?; c=?; d=01}";
    EXPECT_EQ(run_on(text, {"check", "--all", "--max-errors", "1"}),
              (cRun{1, "",
                    "f:1:7: warning: " + repeated +
                        "f:1:19: error: Unexpected token '? [0x40000002]\n"
                        "f: warning: 2 more\nf: error: 2 more\n"}));
    EXPECT_EQ(run_on(text, {"check", "--all", "--max-errors", "1", "-W", "error"}),
              (cRun{1, "",
                    "f:1:19: error: Unexpected token '? [0x40000002]\n"
                    "f: error: 5 more\n"}));
    EXPECT_EQ(run_on(text, {"check", "--all", "--max-errors", "1", "-W", "error=leading-zero"}),
              (cRun{1, "",
                    "f:1:7: warning: " + repeated +
                        "f:1:19: error: Unexpected token '? [0x40000002]\n"
                        "f: warning: 1 more\nf: error: 3 more\n"}));
}

TEST_F(ToolWarnings, twenty_thousand_warnings_are_handled) {
    EXPECT_EQ(run_on("{" + times("a=0;\n", 20000) + "}", {"check", "--max-errors", "1"}),
              (cRun{0, "",
                    "f:2:1: warning: key 'a' is repeated [duplicate-key]\n"
                    "f:1:2: note: it is first here\nf: warning: 19998 more\n"}));
    EXPECT_EQ(run_on("<" + times("5,\n", 20000) + ">", {"check", "--max-errors", "1"}),
              (cRun{0, "",
                    "f:2:1: warning: the set has this value already [duplicate-member]\n"
                    "f:1:2: note: it is first here\nf: warning: 19998 more\n"}));
    std::string const text = times("{a={", 400) + times("}; a={x=1;}}", 400);
    EXPECT_EQ(run_on(text, {"check"}).status, 0);
}

// --- other commands ---

TEST_F(ToolWarnings, other_commands_do_not_print_them) {
    std::string const text = "{a= 1; a= \"C:\\temp\"; b= 007; c= <1, 1>; d= [1,,2]}";
    EXPECT_EQ(run_on(text, {"fmt"}),
              (cRun{0, "{a= \"C:temp\"; b= 7; c= <1, >; d= [1, 2, ]; }\n", ""}));
    EXPECT_EQ(run({"get", "f", "a"}), (cRun{0, "C:temp\n", ""}));
    EXPECT_EQ(run({"to-json", "--compact", "f"}).err,
              "f: warning: a set becomes an array, at path 'c'\n");
    EXPECT_EQ(run({"where", "f", "a"}).err, "");
}

TEST_F(ToolWarnings, numeric_keys_are_compared_by_value) {
    for (char const *text : {"{1.= 1; 1.0= 2;}", "{1.5f= 1; +1.50f= 2;}", "{-.5= 1; -5.0e-1= 2;}",
                             "{intf(8)= 1; intf( \"010\")= 2;}", "{intf(b11)= 1; intf(+3)= 2;}"}) {
        cRun const checked = run_on(text, {"check", "-W", "error"});
        EXPECT_EQ(checked.status, 1) << text;
        EXPECT_NE(checked.err.find(again), std::string::npos) << text;
        EXPECT_EQ(run({"fmt", "-i", "f"}).status, 2) << text;
    }
    for (char const *text : {"{1.5= 1; 1.5f= 2;}", "{-0.0= 1; 0.0= 2;}", "{1= 1; 1.0= 2;}",
                             "{8= 1; intf(8)= 2;}", "{intf(8)= 1; intf(9)= 2;}"})
        EXPECT_EQ(run_on(text, {"check", "-W", "error"}), (cRun{0, "", ""})) << text;
}

TEST_F(ToolWarnings, the_number_of_a_map_without_a_key_is_a_key) {
    EXPECT_EQ(checked({"{{a= 1;} 0= {b= 2;}}", "{5= 1; {a= 1;} {b= 1;}}"}), "");
    EXPECT_EQ(checked({"{0= 1; {a= 2;}}", "{{a= 1;} 0= 2;}", "{{a= 1;} {b= 1;} 1= {b= 2;}}"}),
              "{0= 1; {a= 2;}}\n"
              "  1:8: warning: the number that is the key of this map is repeated" +
                  again +
                  "  1:2: note: it is first here\n"
                  "{{a= 1;} 0= 2;}\n"
                  "  1:10: warning: key '0' is repeated" +
                  again +
                  "  1:2: note: it is first here\n"
                  "{{a= 1;} {b= 1;} 1= {b= 2;}}\n"
                  "  1:22: warning: key 'b' is repeated" +
                  again + "  1:11: note: it is first here\n");
    EXPECT_EQ(run_on("{0= 1; {a= 2;}}", {"fmt", "-i"}).status, 2);
}

TEST_F(ToolWarnings, fmt_does_not_replace_a_file_that_loses_values) {
    std::string const text = "{\n  a= 1; // one\n  b= \"C:\\temp\";\n  a= 2;\n}\n";
    std::string const lost = "f:3:9: error: the \\ before t would be lost [unknown-escape]\n"
                             "f:2:6: error: this value would be lost [duplicate-key]\n"
                             "f:4:3: note: its key is repeated here\n";
    std::string const refused =
        "f: error: not written: data would be lost; --force writes the file anyway\n";
    EXPECT_EQ(run_on(text, {"fmt", "-i"}), (cRun{2, "", lost + refused}));
    EXPECT_EQ(read("f"), text);
    EXPECT_EQ(run_on(text, {"fmt", "-i", "--canonical", "--max-errors", "1"}).err,
              "f:3:9: error: the \\ before t would be lost [unknown-escape]\n"
              "f: error: 1 more\n" +
                  refused);
    EXPECT_EQ(read("f"), text);
    EXPECT_EQ(run_on(text, {"fmt", "-i", "--force"}), (cRun{0, "", lost}));
    EXPECT_EQ(read("f"), "{\n  a= 2; // one\n  b= \"C:temp\";\n}\n");
    EXPECT_EQ(run({"fmt", "-i", "f"}), (cRun{0, "", ""}));
}

TEST_F(ToolWarnings, fmt_loses_the_unstored_values_of_a_merged_map) {
    std::string const refused =
        "f: error: not written: data would be lost; --force writes the file anyway\n";
    EXPECT_EQ(run_on("{a={v={p=1;};};\n a={v=5;};}", {"fmt", "-i"}),
              (cRun{2, "",
                    "f:2:7: error: this value would be lost [duplicate-key]\n"
                    "f:1:5: note: its key is first here\n" +
                        refused}));
    EXPECT_EQ(run_on("{a= {0= 1; 7= 2; };\n a= <5, 6>; }", {"fmt", "-i"}),
              (cRun{2, "",
                    "f:1:9: error: this value would be lost [duplicate-key]\n"
                    "f:2:2: note: its key is repeated here\n" +
                        refused}));
    EXPECT_EQ(run_on("{a= {x= 1; }; a= {y= 2; }; }", {"fmt", "-i"}), (cRun{0, "", ""}));
    EXPECT_EQ(run_on("{a= 007; b= <1, 1>; c= [1,,2]; }", {"fmt", "-i"}), (cRun{0, "", ""}));
}

// Generated maps with few keys, so that many keys are repeated. All numbers differ, so the numbers
// in the old text are exactly those of the new text and of the values reported as lost.
class cGenerated {
  public:
    explicit cGenerated(unsigned seed) : random_(seed) { add_map(0); }

    std::string const &text() const { return text_; }
    int numbers() const { return next_; }
    // The range of the value that begins at that column, as first and last + 1.
    std::pair<int, int> numbers_at(size_t column) const { return values_.at(column - 1); }

  private:
    int below(int limit) { return static_cast<int>(random_() % static_cast<unsigned>(limit)); }

    void add_map(int depth) {
        text_ += "{";
        for (int i = below(5) + (depth == 0 ? 2 : 0); i > 0; --i) {
            constexpr char const *keys[] = {"a", "b", "c", "a", "b", "c", ".0", "0.00", "0", "1"};
            text_ += std::string(keys[below(10)]) + "= ";
            add_value(depth + 1);
            text_ += "; ";
        }
        text_ += "}";
    }

    void add_list(char open, char close) {
        text_ += open;
        for (int i = below(3); i > 0; --i) {
            values_[text_.size()] = {next_, next_ + 1};
            text_ += std::to_string(next_++) + ", ";
        }
        text_ += close;
    }

    void add_value(int depth) {
        size_t const begin = text_.size();
        int const first = next_;
        switch (depth > 4 ? 0 : below(6)) {
        case 1:
            add_list('[', ']');
            break;
        case 2:
            add_list('<', '>');
            break;
        case 3:
        case 4:
            add_map(depth);
            break;
        default:
            text_ += std::to_string(next_++);
        }
        values_[begin] = {first, next_};
    }

    std::mt19937 random_;
    std::string text_;
    int next_ = 1000;
    std::map<size_t, std::pair<int, int>> values_; // by offset
};

std::set<int> numbers_in(std::string const &text) {
    std::set<int> numbers;
    std::regex const number("[1-9][0-9]{3,}");
    for (std::sregex_iterator at(text.begin(), text.end(), number), end; at != end; ++at)
        numbers.insert(std::stoi(at->str()));
    return numbers;
}

TEST_F(ToolWarnings, fmt_loses_the_values_that_it_reports_and_no_others) {
    constexpr size_t count = 200;
    std::vector<cGenerated> generated;
    std::vector<std::string> arguments = {"fmt", "-i", "--force", "--max-errors", "1000"};
    for (unsigned i = 0; i < count; ++i) {
        arguments.push_back(std::to_string(i));
        write(arguments.back(), generated.emplace_back(i).text());
    }
    std::istringstream messages(run(arguments).err);
    std::vector<std::set<int>> lost(count);
    std::set<size_t> faulty;
    for (std::string line; std::getline(messages, line);) {
        size_t const number = std::stoul(line);
        if (line.ends_with("this value would be lost [duplicate-key]")) {
            size_t const column = std::stoul(line.substr(line.find(":1:") + 3));
            auto const [first, last] = generated[number].numbers_at(column);
            for (int i = first; i < last; ++i) lost[number].insert(i);
        } else if (line.find(": note: its key is ") == line.npos) {
            faulty.insert(number); // a number does not become a list
        }
    }
    EXPECT_LT(faulty.size(), count / 2);
    size_t losses = 0;
    for (size_t i = 0; i < count; ++i) {
        if (faulty.count(i)) continue;
        std::set<int> found = numbers_in(read(std::to_string(i)));
        for (int const number : lost[i])
            EXPECT_TRUE(found.insert(number).second) << number << " in " << generated[i].text();
        EXPECT_EQ(found.size(), static_cast<size_t>(generated[i].numbers() - 1000))
            << generated[i].text() << "\n"
            << read(std::to_string(i));
        losses += lost[i].size();
    }
    EXPECT_GT(losses, count);
}

TEST_F(ToolWarnings, set_does_not_change_repeated_keys_and_escapes) {
    std::string const text = "{a= 1; b= \"C:\\temp\"; a= 2; c= 3}";
    EXPECT_EQ(run_on(text, {"check"}).err.find("error"), std::string::npos);
    EXPECT_EQ(run({"set", "-i", "f", "c = 4"}), (cRun{0, "", ""}));
    EXPECT_EQ(read("f"), "{a= 1; b= \"C:\\temp\"; a= 2; c= 4}");
}

} // namespace

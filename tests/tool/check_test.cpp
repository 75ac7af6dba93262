// `check`: every error of a file is reported once, at the position where a person would look.

#include "tests/tool/terminal.h"
#include "tests/tool/tool_run.h"

#include <algorithm>
#include <sstream>

using tool_test::cRun;
using tool_test::times;

namespace {

class ToolCheck : public tool_test::Tool {};

TEST_F(ToolCheck, prints_nothing_for_valid_files) {
    for (std::string const name : {"device.attr", "testplan.attr"}) {
        write_example(name);
        EXPECT_EQ(run({"check", name}), (cRun{0, "", ""}));
    }
    write_example("settings.attr"); // shows what a leading zero means
    EXPECT_EQ(run({"check", "-W", "no-leading-zero", "settings.attr"}), (cRun{0, "", ""}));
    EXPECT_EQ(run({"check", "device.attr", "testplan.attr"}), (cRun{0, "", ""}));
    EXPECT_EQ(check("// c\n5; // c"), "");
}

TEST_F(ToolCheck, continues_after_each_error) {
    EXPECT_EQ(check("{\n"
                    "  a= foo(1);\n"
                    "  b= #none;\n"
                    "  c= #cRef(/nowhere);\n"
                    "  d= 99999999999;\n"
                    "  e= 12ab;\n"
                    "  f= 1;;;\n"
                    "  g= 1 =;\n"
                    "  h;\n"
                    "  i= ;\n"
                    "  ?= 1;\n"
                    "}"),
              "f:2:6: error: Value with unknown type='foo [0x40000005]\n"
              "f:2:6: error: Cannot insert key =a\n"
              "f:3:6: error: Unknown #-value (no defined const): #none [0x40000004]\n"
              "f:3:6: error: Cannot insert key =b\n"
              "f:4:6: error: Error in #cRef(/nowhere): Referenced value is not defined before. "
              "[0x40000003]\n"
              "f:4:6: error: Cannot insert key =c\n"
              "f:5:6: error: Failed to read value: /d Input of standard type: 99999999999 "
              "[0x40000001]\n"
              "f:5:6: error: Cannot insert key =d\n"
              "f:6:6: error: Bad input: 12ab  String is assumed. [0x40000002]\n"
              "f:7:9: error: Unnecessary separator: ; [0x40000007]\n"
              "f:8:8: error: Wrong placed '=', path : /g [0x40000001]\n"
              "f:9:4: error: Pattern 'key =' is missed  [0x40000001]\n"
              "f:10:4: error: Wrong placed '=', path : /0 [0x40000001]\n"
              "f:11:3: error: Unexpected token '? [0x40000002]\n"
              "f:11:4: error: Wrong placed '=', path :  [0x40000001]\n"
              "f:11:7: error: Pattern 'key =' is missed  [0x40000001]\n"
              "f:12:1: error: Pattern 'key =value' is missed in path: /1 [0x40000001]\n"
              "f:12:1: error: Cannot insert key =1\n");
}

TEST_F(ToolCheck, reports_positions_in_the_file_inside_typed_values) {
    EXPECT_EQ(check("{\n a= int(\n\n   ? 5);\n b= string( /* x */ one two);\n}"),
              "f:4:4: error: Unexpected token '? [0x40000002]\n"
              "f:5:21: error: Missing delimiter after: one [0x40000002]\n");
    EXPECT_EQ(check("[int(int(\n int(?5)))]"), "f:2:6: error: Unexpected token '? [0x40000002]\n");
    EXPECT_EQ(check("{a= int(\xC3\xA9 5)}"),
              "f:1:1: error: Map is not closed by '}' [0x40000001]\n"
              "f:1:9: note: it ends here\n"
              "f:1:5: error: Failed to read value, type int [0x40000001]\n"
              "f:1:5: error: Cannot insert key =a\n"
              "f:1:8: error: Closing symbol is missed in type int, path: /a [0x40000001]\n"
              "f:1:9: note: it ends here\n"
              "f:1:9: error: byte 0xc3 outside of strings and comments\n");
}

TEST_F(ToolCheck, reports_where_an_unclosed_container_begins_and_ends) {
    EXPECT_EQ(check("{\n a= 1;\n"), "f:1:1: error: Map is not closed by '}' [0x40000001]\n"
                                    "f:3:1: note: the text ends here\n");
    EXPECT_EQ(check("{a={b=[1"), "f:1:1: error: Map is not closed by '}' [0x40000001]\n"
                                 "f:1:9: note: the text ends here\n"
                                 "f:1:4: error: Map is not closed by '}' [0x40000001]\n"
                                 "f:1:9: note: the text ends here\n"
                                 "f:1:7: error: Vector is not closed by ']' [0x40000001]\n"
                                 "f:1:9: note: the text ends here\n");
    EXPECT_EQ(check("int(5"), "f:1:4: error: Closing symbol is missed in type int, path:  "
                              "[0x40000001]\n"
                              "f:1:6: note: the text ends here\n");
    EXPECT_EQ(check("[1; 2>"), "f:1:1: error: Vector is not closed by ']' [0x40000001]\n"
                               "f:1:6: note: it ends here\n");
    EXPECT_EQ(check("{\n a= <1; 2];\n b= 3;\n}"),
              "f:2:5: error: Set is not closed by '>' [0x40000001]\n"
              "f:2:10: note: it ends here\n");
}

TEST_F(ToolCheck, reports_a_single_bracket) {
    EXPECT_EQ(check("{"), "f:1:1: error: Map is not closed by '}' [0x40000001]\n"
                          "f:1:2: note: the text ends here\n");
    EXPECT_EQ(check(" <"), "f:1:2: error: Set is not closed by '>' [0x40000001]\n"
                           "f:1:3: note: the text ends here\n");
    EXPECT_EQ(check("["), "f:1:1: error: Failed to read container, type vector [0x40000001]\n"
                          "f:1:2: note: the text ends here\n");
    EXPECT_EQ(check("int("), "f:1:1: error: Failed to read value, type int [0x40000001]\n"
                             "f:1:4: error: Closing symbol is missed in type int, path:  "
                             "[0x40000001]\n"
                             "f:1:5: note: the text ends here\n");
    EXPECT_EQ(check("{a="),
              "f:1:1: error: Map is not closed by '}' [0x40000001]\n"
              "f:1:4: note: the text ends here\n"
              "f:1:4: error: Pattern 'key =value' is missed in path: /a [0x40000001]\n"
              "f:1:4: error: Cannot insert key =a\n");
}

TEST_F(ToolCheck, reports_errors_in_the_order_of_the_file) {
    EXPECT_EQ(check("{M= choice(a= 1); T= attlist(n= attspec(typ= int));\n"
                    " t= M(a);\n"
                    " u= T(n= ?);\n"
                    " /* x"),
              "f:1:1: error: Map is not closed by '}' [0x40000001]\n"
              "f:4:6: note: the text ends here\n"
              "f:1:5: error: write the choices as a map: choice({a= 1; b= 2;})\n"
              "f:1:41: error: attspec has no entry 'typ'; did you mean 'type'?\n"
              "f:2:5: error: type M has no choices: declare them as choice({a= 1; b= 2;}), "
              "declared at 1:2 [0x40000001]\n"
              "f:3:10: error: Unexpected token '? [0x40000002]\n"
              "f:3:11: error: Pattern 'key =value' is missed in path: /u/n [0x40000001]\n"
              "f:4:2: error: this comment is not closed\n");
}

// The position where reading ends is reported after any number of errors.
TEST_F(ToolCheck, the_limit_counts_errors_in_the_order_of_the_file) {
    cRun const reported{1, "",
                        "f:2:1: error: Unexpected token '? [0x40000002]\n"
                        "f:6:1: error: byte 0xff outside of strings and comments\n"
                        "f: error: 4 more\n"};
    EXPECT_EQ(run_on("[\n" + times("? 1,\n", 4) + "\xFF]", {"check", "--all", "--max-errors", "2"}),
              reported);
}

TEST_F(ToolCheck, reports_text_after_the_value) {
    std::string const text = "text after the first value is not read\n";
    EXPECT_EQ(check("{} {}"), "f:1:4: error: " + text);
    EXPECT_EQ(check("a=1; b=2;"), "f:1:2: error: " + text);
    EXPECT_EQ(check("[1]]"), "f:1:4: error: " + text);
    EXPECT_EQ(check("5}"), "f:1:2: error: " + text);
    EXPECT_EQ(check("{a= foo(1)}\n}"), "f:1:5: error: Value with unknown type='foo [0x40000005]\n"
                                       "f:1:5: error: Cannot insert key =a\n"
                                       "f:2:1: error: " +
                                           text);
}

TEST_F(ToolCheck, an_error_that_follows_from_another_one_is_not_reported) {
    EXPECT_EQ(check("5 6"), "f:1:1: error: Missing delimiter after value: 5 [0x40000002]\n");
    EXPECT_EQ(check("foo(1) 2"), "f:1:1: error: Value with unknown type='foo [0x40000005]\n");
}

TEST_F(ToolCheck, reports_bytes_that_end_the_reading) {
    EXPECT_EQ(check("{a=1;\xC3\xA9=2;}"),
              "f:1:1: error: Map is not closed by '}' [0x40000001]\n"
              "f:1:6: note: it ends here\n"
              "f:1:6: error: byte 0xc3 outside of strings and comments\n");
    EXPECT_EQ(check("{a={b=1;\xFF};c=2}"),
              "f:1:4: error: Map is not closed by '}' [0x40000001]\n"
              "f:1:9: note: it ends here\n"
              "f:1:9: error: byte 0xff outside of strings and comments\n");
    EXPECT_EQ(check("{a='\xC3\xA9'; /* \xC3\xA9 */ }"), "");
}

TEST_F(ToolCheck, reports_null_bytes) {
    EXPECT_EQ(check(std::string("{a=1;\0b=2}", 10)),
              "f:1:1: error: Map is not closed by '}' [0x40000001]\n"
              "f:1:6: note: it ends here\n"
              "f:1:6: error: byte 0x00 outside of strings and comments\n");
    EXPECT_EQ(check(std::string("{\na='x\0y'; b='\0'}", 17)),
              "f:2:5: error: byte 0x00 in a string\n"
              "f:2:13: error: byte 0x00 in a string\n");
    EXPECT_EQ(check(std::string("{ // \0\n}", 8)), "");
}

TEST_F(ToolCheck, reports_an_unclosed_comment) {
    EXPECT_EQ(check("{a=1}\n /* x"), "f:2:2: error: this comment is not closed\n");
    EXPECT_EQ(check("{a=1}\n/* x *//*"), "f:2:8: error: this comment is not closed\n");
}

TEST_F(ToolCheck, a_file_without_a_value_gives_status_2) {
    cRun const none{2, "", "f: error: the file contains no value\n"};
    EXPECT_EQ(run_on("", {"check"}), (cRun{2, "", "f: error: the file is empty\n"}));
    EXPECT_EQ(run_on("// x\n", {"check"}), none);
    EXPECT_EQ(run_on("}", {"check"}), none);
    EXPECT_EQ(run_on("\xEF\xBB[1]", {"check", "--all"}),
              (cRun{2, "",
                    "f:1:1: error: byte 0xef outside of strings and comments\n"
                    "f: error: the file contains no value\n"}));
}

TEST_F(ToolCheck, the_worst_status_of_several_files_counts) {
    write("good", "1");
    write("bad", "foo(1)");
    std::string const bad = "bad:1:1: error: Value with unknown type='foo [0x40000005]\n";
    std::string const none = "none: error: cannot read: No such file or directory\n";
    EXPECT_EQ(run({"check", "good", "bad", "good"}), (cRun{1, "", bad}));
    EXPECT_EQ(run({"check", "bad", "none", "good", "bad"}), (cRun{2, "", bad + none + bad}));
}

TEST_F(ToolCheck, prints_file_names_as_given) {
    write("f", "foo(1)");
    std::string const text = ":1:1: error: Value with unknown type='foo [0x40000005]\n";
    EXPECT_EQ(run({"check", ".//f", path("f"), "-"}, {.input = "foo(1)"}),
              (cRun{1, "", ".//f" + text + path("f") + text + "-" + text}));
}

TEST_F(ToolCheck, reports_a_hundred_errors_of_a_file_or_the_given_number) {
    std::string const text = "[\n" + times("? 1,\n", 150) + "]";
    auto const reported = [](size_t count, std::string const &more) {
        std::string lines;
        for (size_t i = 0; i < count; ++i)
            lines += "f:" + std::to_string(i + 2) + ":1: error: Unexpected token '? [0x40000002]\n";
        return cRun{1, "", lines + more};
    };
    EXPECT_EQ(run_on(text, {"check", "--all"}), reported(100, "f: error: 50 more\n"));
    EXPECT_EQ(run_on(text, {"check", "--all", "--max-errors", "149"}),
              reported(149, "f: error: 1 more\n"));
    EXPECT_EQ(run_on(text, {"check", "--all", "--max-errors", "150"}), reported(150, ""));
    EXPECT_EQ(run_on(text, {"check", "--all", "--max-errors", "1"}),
              reported(1, "f: error: 149 more\n"));
    EXPECT_EQ(run({"check", "--all", "--max-errors", "1", "f", "f"}).err,
              times("f:2:1: error: Unexpected token '? [0x40000002]\nf: error: 149 more\n", 2));
}

TEST_F(ToolCheck, shortens_long_paths_in_the_middle) {
    std::string const start = "/aaaaaaaaa",
                      text = times("{aaaaaaaaa=", 30) + "99999999999" + times("}", 30);
    std::string const path = times(start, 30);
    std::string const shown = path.substr(0, 57) + " ... " + path.substr(path.size() - 57);
    EXPECT_EQ(check(text).substr(0, 9 + 7 + 22 + shown.size()),
              "f:1:331: error: Failed to read value: " + shown);
}

TEST_F(ToolCheck, shortens_long_strings_between_characters) {
    std::string const e_acute = "\xC3\xA9";
    EXPECT_EQ(check("['" + times(e_acute, 1000) + "' 1]"),
              "f:1:2: error: Missing delimiter after value: \"" + times(e_acute, 82) + " ... " +
                  times(e_acute, 98) + "\" [0x40000002]\n");
}

TEST_F(ToolCheck, shows_control_characters_as_numbers) {
    EXPECT_EQ(check("['a\\\n\x1b[7mb' \x07 1]"),
              "f:1:2: error: Missing delimiter after value: \"a\\x0a\\x1b[7mb\" [0x40000002]\n"
              "f:2:8: error: Unexpected token '\\x07 [0x40000002]\n");
}

TEST_F(ToolCheck, shows_the_line_and_a_marker_on_a_terminal) {
    tool_test::cTerminal const terminal;
    write("f", "{\n    a= 1;\n\tb-c= 2;\n}\n");
    EXPECT_EQ(run({"check", "f"}, {.prepare =
                                       [&] {
                                           ::setenv("NO_COLOR", "1", 1);
                                           ::dup2(terminal.descriptor(), STDERR_FILENO);
                                       }})
                  .status,
              1);
    EXPECT_EQ(terminal.printed(), "f:3:2: error: Missing delimiter after: b [0x40000002]\r\n"
                                  "     3 | \tb-c= 2;\r\n"
                                  "       | \t^\r\n"
                                  "f:3:2: note: a key with a dash needs quotes: \"b-c\"\r\n"
                                  "f:3:2: note: 6 more errors follow from it\r\n");
}

TEST_F(ToolCheck, counts_the_errors_that_follow_from_another) {
    EXPECT_EQ(run_on("{\n a= [1;\n b= 2;\n}", {"check"}),
              (cRun{1, "",
                    "f:2:5: error: Vector is not closed by ']' [0x40000001]\n"
                    "f:4:1: note: it ends here\n"
                    "f:2:5: note: 2 more errors follow from it\n"}));
}

// The positions of all errors, one on a line.
std::string positions_of(std::string const &messages) {
    std::string found;
    std::istringstream is(messages);
    for (std::string line; std::getline(is, line);)
        if (size_t const end = line.find(": error: "); end != line.npos)
            found += line.substr(2, end - 2) + "\n";
    return found;
}

TEST_F(ToolCheck, finds_a_mistake_after_another_mistake) {
    auto const positions = [this](std::string const &text) {
        return positions_of(run_on(text, {"check"}).err);
    };
    EXPECT_EQ(positions("{\n a= 5 volts;\n b= 10px;\n c= 1;\n}"), "2:5\n3:5\n");
    EXPECT_EQ(positions("{\n a-b= 5;\n w= 10px;\n t= 12:30;\n c= 3;\n}"), "2:2\n3:5\n4:5\n");
    EXPECT_EQ(positions("{\n a= ;\n b= ;\n c= 3;\n}"), "2:5\n3:5\n");
    EXPECT_EQ(positions("{\n m= {a-b= 5; w= 10px; };\n n= 1;\n t= 12:30;\n}"), "2:6\n2:17\n4:5\n");
    EXPECT_EQ(positions("{\na-b= 5;\nw= 10px;\n}"), "2:1\n3:4\n");
    EXPECT_EQ(positions("{\n a= (1, 2);\n b= 5 volts;\n c= 1;\n}"), "2:5\n3:5\n");
    // An error that only follows from another one is not a mistake.
    EXPECT_EQ(positions("{\n a= 5 volts;\n b= 10;\n c= 1;\n}"), "2:5\n");
    EXPECT_EQ(positions("{\n a-b= 5;\n w= {x= 10; y= [1, 2]; };\n}"), "2:2\n");
    EXPECT_EQ(positions("{\n a= 1;\n b-c= #cRef(/a);\n d= #cRef(/a);\n}"), "3:2\n");
}

TEST_F(ToolCheck, suggests_the_name_with_the_same_first_letters) {
    EXPECT_EQ(run_on("{m= choice({on= 1; off= 2}); a= m(of)}", {"check"}).err,
              "f:1:33: error: 'of' is not a choice of type m, declared at 1:2; did you mean 'off'? "
              "[0x40000001]\n");
}

} // namespace

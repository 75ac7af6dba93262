// `from-json`: the result for each JSON value, and refused values with position and path.

#include "tests/tool/tool_run.h"

#include <cstdio>
#include <cstring>
#include <limits>

using tool_test::cRun;
using tool_test::times;

namespace {

class ToolFromJson : public tool_test::Tool {
  protected:
    cRun convert(std::string const &json) const { return run({"from-json"}, {.input = json}); }
    // The command succeeds and writes this, which formatting leaves unchanged and check accepts.
    std::string text(std::string const &json) const {
        cRun const run = convert(json);
        EXPECT_EQ(run.status, 0) << json;
        EXPECT_EQ(run.err, "") << json;
        EXPECT_EQ(run_on(run.out, {"fmt"}), (cRun{0, run.out, ""}));
        EXPECT_EQ(check(run.out), "");
        return run.out;
    }
    // The error messages; nothing is written.
    std::string refused(std::string const &json) const {
        cRun const run = convert(json);
        EXPECT_EQ(run.status, 2) << json;
        EXPECT_EQ(run.out, "") << json;
        return run.err;
    }
};

TEST_F(ToolFromJson, a_document_is_converted) {
    EXPECT_EQ(text(R"({"name": "Ann", "age": 7, "height": 1.25, "tags": ["a", "b c"],
                       "home": {"city": "Köln", "zip": null}, "ok": true})"),
              "{\n"
              "  name= Ann;\n"
              "  age= 7;\n"
              "  height= 1.25000;\n"
              "  tags= [a, \"b c\", ];\n"
              "  home= {\n"
              "      city= \"K\xC3\xB6ln\";\n"
              "      zip= #nil;\n"
              "  };\n"
              "  ok= true;\n"
              "}\n");
}

TEST_F(ToolFromJson, values_may_be_alone) {
    EXPECT_EQ(text("null"), "#nil\n");
    EXPECT_EQ(text("true"), "true\n");
    EXPECT_EQ(text("false"), "false\n");
    EXPECT_EQ(text("5"), "5\n");
    EXPECT_EQ(text("-2.5"), "-2.50000\n");
    EXPECT_EQ(text("\"word\""), "word\n");
    EXPECT_EQ(text("\"\""), "\"\"\n");
    EXPECT_EQ(text("[]"), "[]\n");
    EXPECT_EQ(text("{}"), "{}\n");
}

TEST_F(ToolFromJson, whole_numbers_are_int_if_they_fit) {
    EXPECT_EQ(text("2147483647"), "2147483647\n");
    EXPECT_EQ(text("2147483648"), "2147483648.0\n");
    EXPECT_EQ(text("-2147483648"), "-2147483648\n");
    EXPECT_EQ(text("-2147483649"), "-2147483649.0\n");
    EXPECT_EQ(text("-0"), "0\n");
}

TEST_F(ToolFromJson, whole_numbers_are_double_if_it_represents_them) {
    EXPECT_EQ(text("9007199254740992"), "9007199254740992.0\n");
    EXPECT_EQ(refused("9007199254740993"), "-:1:1: error: the number 9007199254740993 fits neither "
                                           "int nor double; use --big=double or --big=string\n");
    EXPECT_EQ(text("9007199254740994"), "9007199254740994.0\n");
    EXPECT_EQ(text("-9007199254740992"), "-9007199254740992.0\n");
    EXPECT_EQ(refused("-9007199254740993"),
              "-:1:1: error: the number -9007199254740993 fits neither int nor double; use "
              "--big=double or --big=string\n");
    EXPECT_EQ(text("9223372036854775808"), "9223372036854775808.0\n");
    EXPECT_EQ(refused("18446744073709551615"),
              "-:1:1: error: the number 18446744073709551615 fits neither int nor double; use "
              "--big=double or --big=string\n");
    EXPECT_EQ(text("18446744073709551616"), "18446744073709551616.0\n");
    EXPECT_EQ(refused("18446744073709551617"),
              "-:1:1: error: the number 18446744073709551617 fits neither int nor double; use "
              "--big=double or --big=string\n");
    EXPECT_EQ(text("-18446744073709551616"), "-18446744073709551616.0\n");
}

TEST_F(ToolFromJson, whole_numbers_may_have_any_length) {
    EXPECT_EQ(text("1" + times("0", 22)), "1.00000e+22\n");
    EXPECT_EQ(refused("1" + times("0", 23)),
              "-:1:1: error: the number 1" + times("0", 23) +
                  " fits neither int nor double; use --big=double or --big=string\n");
    EXPECT_EQ(refused(times("9", 300)),
              "-:1:1: error: the number " + times("9", 27) + " ... " + times("9", 27) +
                  " fits neither int nor double; use --big=double or --big=string\n");
    EXPECT_EQ(refused(times("9", 310)), "-:1:1: error: the number " + times("9", 27) + " ... " +
                                            times("9", 27) +
                                            " fits neither int nor double; use --big=string\n");
}

TEST_F(ToolFromJson, doubles_preserve_their_value) {
    EXPECT_EQ(text("[1.0, 0.1, 1e5, 1E-7, 0.30000000000000004, 123456789.123456789]"),
              "[1.00000, 0.100000, 100000., 1.00000e-07, 0.30000000000000004, "
              "123456789.12345679, ]\n");
    EXPECT_EQ(text("-0.0"), "-0.00000\n");
    EXPECT_EQ(text("[1.7976931348623157e308, 5e-324, 2.2250738585072014e-308]"),
              "[1.7976931348623157e+308, 4.94066e-324, 2.2250738585072014e-308, ]\n");
    EXPECT_EQ(refused("{\"a\": [0, 1e309]}"),
              "-:1:11: error: the number 1e309 is larger than every double, at path 'a/1'\n");
}

TEST_F(ToolFromJson, strings_are_converted) {
    EXPECT_EQ(text(R"(["true", "12", "#nil", "a b", "it's", "say \"x\"", "C:\\x", "\/"])"),
              R"(["true", "12", "#nil", "a b", "it\'s", "say \"x\"", "C:\\x", "/", ])"
              "\n");
    EXPECT_EQ(text(R"(["//", "/* x", "*/", "a\tb", "\u0001\u007f"])"),
              "[\"//\", \"/* x\", \"*/\", \"a\tb\", \"\x01\x7f\", ]\n");
    EXPECT_EQ(text(R"("\r")"), "\"\r\"\n");
    EXPECT_EQ(text(R"("a\r\nb\\\n")"), "\"a\r\\\nb\\\\\\\n\"\n");
}

TEST_F(ToolFromJson, escapes_become_utf8) {
    EXPECT_EQ(text(R"(["\u00e9", "\u20AC", "\ud83d\uDE00", "\uFFFF"])"),
              "[\"\xC3\xA9\", \"\xE2\x82\xAC\", \"\xF0\x9F\x98\x80\", \"\xEF\xBF\xBF\", ]\n");
    EXPECT_EQ(text("\"\xC3\xA9\xF0\x9F\x98\x80\""), "\"\xC3\xA9\xF0\x9F\x98\x80\"\n");
}

TEST_F(ToolFromJson, a_null_character_is_refused) {
    EXPECT_EQ(refused(R"({"a": ["x", "y\u0000"], "b\u0000": 1})"),
              "-:1:13: error: a string with a character 0 cannot be written, at path 'a/1'\n"
              "-:1:25: error: a key with a character 0 cannot be written, at path '\"b\\x00\"'\n");
}

TEST_F(ToolFromJson, keys_are_converted) {
    EXPECT_EQ(text(R"({"": 1, "a": 2, "true": 3, "false": 4, "12": 5, "-1.5": 6, "a/b": 7})"),
              "{\n  \"\"= 1;\n  a= 2;\n  \"true\"= 3;\n  \"false\"= 4;\n  \"12\"= 5;\n"
              "  \"-1.5\"= 6;\n  \"a/b\"= 7;\n}\n");
    EXPECT_EQ(text(R"({"a b": 1, "a\nb": 2, "//": 3, "'\"\\": 4, "é": 5, "\r": 6, "nil": 7})"),
              "{\n  \"a b\"= 1;\n  \"a\\\nb\"= 2;\n  \"//\"= 3;\n  \"\\'\\\"\\\\\"= 4;\n"
              "  \"\xC3\xA9\"= 5;\n  \"\r\"= 6;\n  nil= 7;\n}\n");
}

TEST_F(ToolFromJson, keys_that_begin_with_a_hash_sign_are_quoted) {
    std::string const json = R"json({"a":{"#x":1,"x#":2},"#":[{"#nil":0}],"#cRef(/a)":{}})json";
    std::string const attr = text(json);
    EXPECT_EQ(attr, "{\n  a= {\n      \"#x\"= 1;\n      \"x#\"= 2;\n  };\n  \"#\"= [\n      {\n"
                    "          \"#nil\"= 0;\n      },\n  ];\n  \"#cRef(/a)\"= {};\n}\n");
    EXPECT_EQ(run({"to-json", "--compact", "--strict"}, {.input = attr}),
              (cRun{0, json + "\n", ""}));
    EXPECT_EQ(run({"get", "-", "\"#\"/0/\"#nil\""}, {.input = attr}), (cRun{0, "0\n", ""}));
}

TEST_F(ToolFromJson, a_repeated_key_is_refused) {
    EXPECT_EQ(refused("{\"a\": 1,\n \"b\": {\"c\": 1, \"c\": {}},\n  \"a\": [2]}"),
              "-:2:16: error: this key occurs twice in the object, at path 'b/c'; use "
              "--duplicates=last\n"
              "-:2:8: note: it is first here\n"
              "-:3:3: error: this key occurs twice in the object, at path 'a'; use "
              "--duplicates=last\n"
              "-:1:2: note: it is first here\n");
    EXPECT_EQ(text("[{\"a\": 1}, {\"a\": 1}]"),
              "[\n  {\n      a= 1;\n  },\n  {\n      a= 1;\n  },\n]\n");
}

TEST_F(ToolFromJson, of_equal_keys_the_last_value_wins_at_the_position_of_the_first) {
    auto const last = [this](std::string const &json) {
        cRun const there = run({"from-json", "--duplicates=last"}, {.input = json});
        EXPECT_EQ(there.status, 0) << json;
        EXPECT_EQ(there.err, "") << json;
        return run({"to-json", "--compact"}, {.input = there.out}).out;
    };
    EXPECT_EQ(last(R"({"a": 1, "b": {"c": [1], "c": {}}, "a": [2]})"),
              "{\"a\":[2],\"b\":{\"c\":{}}}\n");
    EXPECT_EQ(last(R"([{"a": {"x": 1}, "\u0061": {"y": 2}, "a": {"x": 3}}])"),
              "[{\"a\":{\"x\":3}}]\n");
    EXPECT_EQ(run({"from-json", "--duplicates=error"}, {.input = R"({"a": 1, "a": 1})"}),
              (cRun{2, "",
                    "-:1:10: error: this key occurs twice in the object, at path 'a'; use "
                    "--duplicates=last\n-:1:2: note: it is first here\n"}));
    EXPECT_EQ(run({"from-json", "--duplicates=first"}, {.input = "1"}).status, 2);
}

TEST_F(ToolFromJson, big_numbers_can_be_allowed) {
    auto const big = [this](char const *choice, std::string const &json) {
        return run({"from-json", "--big", choice}, {.input = json});
    };
    std::string const numbers = "[9007199254740993, -18446744073709551617, 4294967296, 0.5, 1e30]";
    EXPECT_EQ(big("double", numbers),
              (cRun{0,
                    "[9007199254740992.0, -18446744073709551616.0, 4294967296.0, 0.500000, "
                    "1.00000e+30, ]\n",
                    ""}));
    EXPECT_EQ(big("string", numbers),
              (cRun{0,
                    "[\"9007199254740993\", \"-18446744073709551617\", 4294967296.0, 0.500000, "
                    "1.00000e+30, ]\n",
                    ""}));
    EXPECT_EQ(big("error", "9007199254740993"), convert("9007199254740993"));
    EXPECT_EQ(big("none", "1").status, 2);
}

TEST_F(ToolFromJson, numbers_beyond_double_can_be_allowed) {
    std::string const digits = times("7", 400);
    auto const json = [](std::string const &number) {
        return "{\"" + number + "\": [\"" + number + "\", " + number + ",\n-" + number +
               "], \"b\": ";
    };
    EXPECT_EQ(run({"from-json", "--big=string"}, {.input = json(digits) + "1}"}),
              (cRun{0,
                    "{\n  \"" + digits + "\"= [\"" + digits + "\", \"" + digits + "\", \"-" +
                        digits + "\", ];\n  b= 1;\n}\n",
                    ""}));
    cRun const rounded = run({"from-json", "--big=double"}, {.input = "[" + digits + "]"});
    EXPECT_EQ(rounded.status, 2);
    EXPECT_NE(rounded.err.find("fits neither int nor double, at path '0'; use --big=string\n"),
              std::string::npos)
        << rounded.err;
    EXPECT_EQ(run({"from-json", "--big=string"}, {.input = json(digits) + digits + "\n 8}"}).err,
              "-:3:2: error: expected ',' or '}', found '8'\n");
    EXPECT_EQ(refused("[" + digits + ".]"),
              "-:1:403: error: expected a digit after '.', found ']'\n");
    EXPECT_EQ(refused("{" + digits + ":1}"),
              "-:1:2: error: expected a key in double quotes, found '" + times("7", 17) + " ... " +
                  times("7", 17) + "'\n");
    char largest[400];
    std::snprintf(largest, sizeof largest, "%.0f", std::numeric_limits<double>::max());
    EXPECT_EQ(std::strlen(largest), 309u);
    EXPECT_EQ(text(largest), "1.7976931348623157e+308\n");
}

TEST_F(ToolFromJson, the_layout_can_be_chosen) {
    EXPECT_EQ(text("{\"a\": [], \"b\": {}, \"c\": [1, 2], \"d\": [[1], []], \"e\": [{}]}"),
              "{\n"
              "  a= [];\n"
              "  b= {};\n"
              "  c= [1, 2, ];\n"
              "  d= [\n"
              "      [1, ],\n"
              "      [],\n"
              "  ];\n"
              "  e= [\n"
              "      {},\n"
              "  ];\n"
              "}\n");
    EXPECT_EQ(text(R"({"a": ["x", "two\nlines"]})"),
              "{\n  a= [\n      x,\n      \"two\\\nlines\",\n  ];\n}\n");
}

TEST_F(ToolFromJson, all_errors_are_reported_and_reading_continues) {
    EXPECT_EQ(
        refused("{\"x\": [1, 2], \"x\": [9, {\"\\u0000\": 0}],\n"
                " \"y\": [3000000001, 9007199254740993, {\"\\u0000\": 0}, 9007199254740993]}"),
        "-:1:15: error: this key occurs twice in the object, at path 'x'; use "
        "--duplicates=last\n-:1:2: note: it is first here\n"
        "-:1:25: error: a key with a character 0 cannot be written, at path 'x/1/\"\\x00\"'\n"
        "-:2:20: error: the number 9007199254740993 fits neither int nor double, at path "
        "'y/1'; use --big=double or --big=string\n"
        "-:2:39: error: a key with a character 0 cannot be written, at path 'y/2/\"\\x00\"'\n"
        "-:2:53: error: the number 9007199254740993 fits neither int nor double, at path "
        "'y/3'; use --big=double or --big=string\n");
}

TEST_F(ToolFromJson, messages_are_limited) {
    write("f", "{\"a\": [" + times("9007199254740993, ", 10) + "0]}");
    EXPECT_EQ(run({"from-json", "--max-errors", "2", "f"}),
              (cRun{2, "",
                    "f:1:8: error: the number 9007199254740993 fits neither int nor double, at "
                    "path 'a/0'; use --big=double or --big=string\n"
                    "f:1:26: error: the number 9007199254740993 fits neither int nor double, at "
                    "path 'a/1'; use --big=double or --big=string\n"
                    "f: error: 8 more\n"}));
}

TEST_F(ToolFromJson, positions_count_bytes_and_lines_from_1) {
    EXPECT_EQ(refused("{\r\n\t\"\xC3\xA9\\\"\": [\n\n 1,\"x\" , 9007199254740993 ] }"),
              "-:4:10: error: the number 9007199254740993 fits neither int nor double, at path "
              "'\"\xC3\xA9\\\"\"/2'; use --big=double or --big=string\n");
}

TEST_F(ToolFromJson, a_null_character_between_values_is_refused) {
    EXPECT_EQ(refused(std::string("1\n\0", 3)), "-:2:1: error: a character 0 follows the value\n");
    EXPECT_EQ(refused(std::string("[1]\0[2]", 7)),
              "-:1:4: error: a character 0 follows the value\n");
}

TEST_F(ToolFromJson, errors_before_a_syntax_error_are_also_reported) {
    EXPECT_EQ(refused("{\"\\u0000\": 1, \"a\": ]"),
              "-:1:2: error: a key with a character 0 cannot be written, at path '\"\\x00\"'\n"
              "-:1:20: error: expected a value, found ']'\n");
}

TEST_F(ToolFromJson, a_byte_order_mark_is_skipped) {
    EXPECT_EQ(text("\xEF\xBB\xBF[1]"), "[1, ]\n");
    EXPECT_EQ(refused("\xEF\xBB\xBF{\"\\u0000\":1}"),
              "-:1:5: error: a key with a character 0 cannot be written, at path '\"\\x00\"'\n");
}

TEST_F(ToolFromJson, values_may_be_as_deep_as_can_be_read) {
    for (std::string const core : {"", "5", "\"x\\ny\""}) {
        std::string const deep = times("[", 1000) + core + times("]", 1000);
        EXPECT_NE(text(deep), "");
    }
    EXPECT_NE(text(times("{\"a\":", 999) + "{}" + times("}", 999)), "");
}

TEST_F(ToolFromJson, deeper_values_are_refused) {
    std::string const path = times("0/", 28) + "0 ... " + times("0/", 28) + "0";
    std::string const reported = "nesting is deeper than 1000, at path '" + path + "'\n";
    EXPECT_EQ(refused(times("[", 1001) + times("]", 1001)), "-:1:1001: error: " + reported);
    EXPECT_EQ(
        refused(times("[", 1005) + "{\"#\":[9007199254740993,\"\\u0000\"]}" + times("]", 1005)),
        "-:1:1001: error: " + reported)
        << "the contents of too deep values are skipped";
    EXPECT_EQ(refused(times("[", 1000) + "[[],{}],{\"#\":{}},0" + times("]", 1000)),
              "-:1:1001: error: " + reported +
                  "-:1:1009: error: nesting is deeper than 1000, at path '" +
                  path.substr(0, path.size() - 1) + "1'\n");
}

TEST_F(ToolFromJson, a_million_open_brackets_are_refused) {
    std::string const err = refused(times("[", 1000000));
    EXPECT_NE(err.find("-:1:1001: error: nesting is deeper than 1000, at path '"),
              std::string::npos);
    EXPECT_NE(err.find("\n-:1:1000001: error: expected a value, found the end of the text\n"),
              std::string::npos);
    EXPECT_NE(refused(times("{\"a\":", 1000000)), "");
}

TEST_F(ToolFromJson, the_output_named_minus_is_the_standard_output) {
    write("f", "{a= 1}");
    EXPECT_EQ(run({"from-json", "-o", "-"}, {.input = "[1]"}), (cRun{0, "[1, ]\n", ""}));
    EXPECT_EQ(run({"to-json", "-o", "-", "f"}), (cRun{0, "{\"a\": 1}\n", ""}));
    EXPECT_EQ(run({"set", "-o", "-", "f", "a = 2"}), (cRun{0, "{a= 2}", ""}));
    EXPECT_FALSE(std::filesystem::exists(path("-")));
}

TEST_F(ToolFromJson, blanks_are_preserved_in_strings_but_not_at_line_ends) {
    EXPECT_EQ(text(R"([{"a": "x \n}, \n\"]; \n\\ \n", "b": {"c": "\\"}}, "d \n"])"),
              "[\n  {\n      a= \"x \\\n}, \\\n\\\"]; \\\n\\\\ \\\n\";\n"
              "      b= {\n          c= \"\\\\\";\n      };\n  },\n  \"d \\\n\",\n]\n");
}

TEST_F(ToolFromJson, the_output_may_be_a_file) {
    write("f.json", "[1, 2]");
    EXPECT_EQ(run({"from-json", "f.json", "-o", "f.attr"}), (cRun{0, "", ""}));
    EXPECT_EQ(read("f.attr"), "[1, 2, ]\n");
    EXPECT_EQ(run({"from-json", "--output", "f.json", "f.json"}), (cRun{0, "", ""}));
    EXPECT_EQ(read("f.json"), "[1, 2, ]\n");
}

TEST_F(ToolFromJson, a_file_is_unchanged_after_an_error) {
    write("f.json", "[1, 2");
    write("f.attr", "old");
    EXPECT_EQ(run({"from-json", "f.json", "-o", "f.attr"}).status, 2);
    EXPECT_EQ(read("f.attr"), "old");
    EXPECT_EQ(run({"from-json", "f.json", "-o", "new.attr"}).status, 2);
    EXPECT_FALSE(std::filesystem::exists(path("new.attr")));
}

TEST_F(ToolFromJson, files_that_cannot_be_read_or_written_are_reported) {
    EXPECT_EQ(run({"from-json", "nowhere"}),
              (cRun{2, "", "nowhere: error: cannot read: No such file or directory\n"}));
    EXPECT_EQ(
        run({"from-json", "-o", "no/where"}, {.input = "1"}),
        (cRun{
            2, "",
            "no/where: error: cannot write: No such file or directory; the file is unchanged\n"}));
    int const full = ::open("/dev/full", O_WRONLY);
    EXPECT_EQ(run({"from-json"}, {.input = "1", .out = full}),
              (cRun{2, "", "qrv: error: cannot write the output: No space left on device\n"}));
    ::close(full);
}

TEST_F(ToolFromJson, the_input_may_be_the_standard_input) {
    EXPECT_EQ(run({"from-json"}, {.input = "1"}), (cRun{0, "1\n", ""}));
    EXPECT_EQ(run({"from-json", "-"}, {.input = "1"}), (cRun{0, "1\n", ""}));
}

TEST_F(ToolFromJson, truncated_json_is_refused) {
    std::string const whole = R"({"a": [1.5e+3, true, null, "x\u00e9\n"], "b": {"c": -12}})";
    for (size_t size = 0; size < whole.size(); ++size) {
        cRun const run = convert(whole.substr(0, size));
        EXPECT_EQ(run.status, 2) << size;
        EXPECT_EQ(run.out, "") << size;
        EXPECT_EQ(run.err.substr(0, 4), "-:1:") << size;
        EXPECT_EQ(run.err.find(": error: "), run.err.rfind(": error: ")) << run.err;
    }
    EXPECT_EQ(convert(whole).status, 0);
}

} // namespace

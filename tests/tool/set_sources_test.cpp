// `set`: statements from several sources, values by --arg, and literals that would change.

#include "tests/tool/tool_run.h"

using tool_test::cRun;
using tool_test::usage_error;

namespace {

class ToolSetSources : public tool_test::Tool {
  protected:
    cRun set(std::vector<std::string> arguments, std::string const &input = "") const {
        write("f", "{a= 1; b= x}");
        arguments.insert(arguments.begin(), {"set", "f"});
        return run(std::move(arguments), {.input = input});
    }
};

std::string reported(std::string const &place, std::string const &text, std::string const &note) {
    return place + ": error: " + text + "\n" + place + ": note: " + note + "\n";
}

TEST_F(ToolSetSources, statements_run_in_order_of_arguments_expressions_and_files) {
    write("more", "a += 1000");
    EXPECT_EQ(set({"-f", "more", "-e", "a += 10", "a = 2", "a += 5", "-e", "a += 100"}),
              (cRun{0, "{a= 1117; b= x}", ""}));
    EXPECT_EQ(set({"-f", "-"}, "a = 3;\nb = y"), (cRun{0, "{a= 3; b= y}", ""}));
    EXPECT_EQ(set({"-f", "-"}, ""), (cRun{0, "{a= 1; b= x}", ""}));
}

TEST_F(ToolSetSources, an_error_reports_the_position_of_its_statement) {
    write("more", "\na = z");
    std::string const text = "a: it is an int and cannot store a string as it is";
    std::string const note = "&= replaces a value of any type";
    EXPECT_EQ(
        set({"b = y", "a = y", "-f", "more"}),
        (cRun{2, "", reported("statements 2:1:5", text, note) + reported("more:2:5", text, note)}));
    EXPECT_EQ(set({"-f", "nowhere"}),
              (cRun{2, "", "nowhere: error: cannot read: No such file or directory\n"}));
    EXPECT_EQ(run({"set", "-", "-f", "-"}),
              (cRun{2, "",
                    "-: error: the standard input cannot be both FILE and the file of "
                    "statements\n"}));
}

TEST_F(ToolSetSources, a_named_value_is_one_string_with_any_content) {
    for (std::string const value :
         {"y", "", "true", "5", "y\"; a = 2; \"", "'; a = 2", "\\", "\\\"", "a\nb\r\nc\td", "// c",
          "/* c", "$value", "#nil", "\xC3\xBC", "=="}) {
        std::string const value_given = "value=" + value;
        EXPECT_EQ(set({"-o", "g", "--arg", value_given, "b = $value"}), (cRun{0, "", ""})) << value;
        EXPECT_EQ(run({"get", "g", "b"}), (cRun{0, value + "\n", ""}));
        EXPECT_EQ(run({"get", "g", "a"}), (cRun{0, "1\n", ""})) << value;
    }
}

TEST_F(ToolSetSources, a_named_value_may_be_a_key_or_inside_a_container) {
    EXPECT_EQ(
        set({"--arg", "k=two/words", "--arg", "v=x; y", "m/$k = {n= [$v, $v]}", "--reformat"}),
        (cRun{0,
              "{\n  a= 1;\n  b= x;\n  m= {\n      \"two/words\"= {n= [\"x; y\", \"x; y\", ]; "
              "};\n  }; \n}\n",
              ""}));
    EXPECT_EQ(set({"--arg", "v=1", "b = '$v'; a = 2", "-e", "b += $v"}),
              (cRun{0, "{a= 2; b= \"$v1\"}", ""}))
        << "in quotes, $v is plain text";
}

TEST_F(ToolSetSources, names_without_value_and_unused_values_are_reported) {
    EXPECT_EQ(set({"a = 2; b = $x; b = $"}),
              (cRun{2, "",
                    reported("statements:1:12", "$x has no value", "--arg x=VALUE gives one") +
                        reported("statements:1:20", "a name is missing after $",
                                 "a string that contains $ needs quotes")}));
    EXPECT_EQ(set({"a = 2", "--arg", "x=1"}),
              (cRun{2, "", "statements: error: --arg x is not used\n"}));
    for (std::string const value : {"x", "=1", "1x=1", "x y=1"})
        EXPECT_EQ(set({"a = 2", "--arg", value}),
                  usage_error("set", "--arg: NAME=VALUE is needed, not " + value));
}

TEST_F(ToolSetSources, positions_in_messages_refer_to_the_statement_as_given) {
    std::string const text = "a: 1.50000 would be stored as 1";
    std::string const note = "&= replaces it and its type; --convert stores the changed value";
    EXPECT_EQ(
        set({"--arg", "v=long\nand longer", "b = $v; a = 1.5;\nb = $v;\n a = 1.5"}),
        (cRun{2, "",
              reported("statements:1:13", text, note) + reported("statements:3:6", text, note)}));
}

TEST_F(ToolSetSources, literals_that_would_be_stored_differently_are_refused) {
    std::string const convert = "--convert stores the changed value";
    for (auto const &[number, stored] :
         std::vector<std::pair<std::string, std::string>>{{"3000000000U", "-1294967296"},
                                                          {"0xFFFFFFFF", "-1"},
                                                          {"1.0e-400", "0"},
                                                          {"1.0e-60f", "0"}})
        EXPECT_EQ(
            set({"c = [" + number + "]"}),
            (cRun{2, "",
                  reported("statements:1:6", number + " would be stored as " + stored, convert)}));
    EXPECT_EQ(set({"b = 'x\\ny\\z'"}),
              (cRun{2, "",
                    reported("statements:1:7", "the \\ before n would be lost",
                             "\\\\ is a \\; --convert allows it")}));
    EXPECT_EQ(set({"a = 0xFFFFFFFF; b = 'x\\ny'", "--convert"}), (cRun{0, "{a= -1; b= xny}", ""}));
    EXPECT_EQ(
        set({"c = [2147483647U, 0x7FFFFFFF, 0.0e-400, 1.0e-300, P101, e5, '\\\\ \\' \\\" \\\n']"})
            .err,
        "");
    EXPECT_EQ(set({"c = intf(0xFFFFFFFF)", "--reformat"}).err, "") << "an intf has 32 bits";
}

// --- --diff ---

TEST_F(ToolSetSources, a_diff_is_printed_and_nothing_written) {
    std::string const text = "{\n  a= 1; // one\n  b= 2;\n  c= 3;\n  d= 4;\n  e= 5;\n}\n";
    std::string const diff = "--- g\n+++ g\n@@ -1,5 +1,5 @@\n {\n-  a= 1; // one\n+  a= 7; // one\n"
                             "   b= 2;\n   c= 3;\n   d= 4;\n";
    write("g", text);
    EXPECT_EQ(run({"set", "--diff", "g", "a = 7"}), (cRun{1, diff, ""}));
    EXPECT_EQ(read("g"), text);
    EXPECT_EQ(run({"set", "--diff", "g", "a = 1"}), (cRun{0, "", ""}));
    EXPECT_EQ(run({"set", "--diff", "-i", "g", "a = 7"}), (cRun{0, diff, ""}));
    EXPECT_EQ(read("g"), "{\n  a= 7; // one\n  b= 2;\n  c= 3;\n  d= 4;\n  e= 5;\n}\n");
    EXPECT_EQ(set({"--diff", "a = x"}).status, 2);
}

TEST_F(ToolSetSources, a_diff_shows_a_missing_last_line_feed) {
    EXPECT_EQ(set({"--diff", "a = 2"}),
              (cRun{1,
                    "--- f\n+++ f\n@@ -1,1 +1,1 @@\n-{a= 1; b= x}\n\\ No newline at end of file\n"
                    "+{a= 2; b= x}\n\\ No newline at end of file\n",
                    ""}));
    EXPECT_EQ(run_on("{a=1}", {"fmt", "--diff"}),
              (cRun{1,
                    "--- f\n+++ f\n@@ -1,1 +1,1 @@\n-{a=1}\n\\ No newline at end of file\n"
                    "+{a= 1; }\n",
                    ""}));
}

TEST_F(ToolSetSources, patch_creates_the_new_text_from_the_diff) {
    write("source", "{location= {room= \"1.1\"; }; new= {x= 1; }; }");
    for (std::vector<std::string> command :
         {std::vector<std::string>{"set", "two words", "bus/baud = 9600; zz = 1"},
          {"del", "two words", "bus", "name"},
          {"mv", "two words", "bus/baud", "speed"},
          {"ins", "two words", "bus/baud", "after", "zz", "1"},
          {"merge", "two words", "source"},
          {"set", "--reformat", "two words", "zz = [1]"}}) {
        write("two words", tool_test::bytes_of(test::source_file("examples/device.attr")));
        std::string const wanted = run(command).out;
        command.insert(command.begin() + 1, "--diff");
        cRun const diff = run(command);
        EXPECT_EQ(diff.status, 1) << command[0];
        write("diff", diff.out);
        std::string const patch = "cd '" + folder_ + "' && patch -s -p0 <diff";
        EXPECT_EQ(std::system(patch.c_str()), 0) << diff.out;
        EXPECT_EQ(read("two words"), wanted) << command[0];
    }
}

// --- paths and forms of get ---

TEST_F(ToolSetSources, two_slashes_in_a_path_are_an_error) {
    write("f", "{a= {b= 1; 'x//y'= 2}}");
    std::string const text =
        "f: error: path 'a//b' contains // outside of quotes, which begins a comment\n";
    for (std::vector<std::string> const &command : {std::vector<std::string>{"get", "f", "a//b"},
                                                    {"where", "f", "a//b"},
                                                    {"explain", "f", "a//b"},
                                                    {"del", "f", "a//b"},
                                                    {"mv", "f", "a//b", "c"},
                                                    {"ins", "f", "a//b", "before", "c", "1"}})
        EXPECT_EQ(run(command), (cRun{2, "", text})) << command[0];
    EXPECT_EQ(run({"get", "f", "a/*b"}).err,
              "f: error: path 'a/*b' contains /* outside of quotes, which begins a comment\n");
    EXPECT_EQ(run({"get", "f", "a/'x//y'"}), (cRun{0, "2\n", ""}));
}

TEST_F(ToolSetSources, get_prints_raw_text_or_json) {
    write("f", "{s= 'a \"b\"'; n= 5; d= 1.5; b= true; v= [1, x]; c= #nil}");
    std::vector<std::string> const paths{"s", "n", "d", "b", "v", "c"};
    auto const get = [&](std::string const &form) {
        std::vector<std::string> arguments{"get", form, "f"};
        arguments.insert(arguments.end(), paths.begin(), paths.end());
        return run(arguments);
    };
    EXPECT_EQ(get("--raw"), (cRun{0, "a \"b\"\n5\n1.50000\ntrue\n[1, x, ]\n#nil\n", ""}));
    EXPECT_EQ(get("--text"), (cRun{0, "\"a \\\"b\\\"\"\n5\n1.50000\ntrue\n[1, x, ]\n#nil\n", ""}));
    EXPECT_EQ(get("--json"), (cRun{0, "\"a \\\"b\\\"\"\n5\n1.5\ntrue\n[1, \"x\"]\nnull\n", ""}));
    EXPECT_EQ(run({"get", "--raw", "--json", "f", "s"}).status, 2);
}

TEST_F(ToolSetSources, a_whole_number_has_no_exponent) {
    write("f", "{a= 1.0e15; b= -1.0e20; c= 100000.0; d= 1.5e-7; f= 1.0e7f}");
    EXPECT_EQ(run({"get", "f", "a", "b", "c", "d", "f"}),
              (cRun{0,
                    "1000000000000000.\n-100000000000000000000.\n100000.\n1.50000e-07\n"
                    "10000000.\n",
                    ""}));
}

} // namespace

// `fmt` to standard output and `fmt --check`: layout, text before and after the value, exact and
// plain text.

#include "tests/tool/tool_run.h"

#include <algorithm>

using tool_test::bytes_of;
using tool_test::cRun;
using tool_test::times;

namespace {

class ToolFmt : public tool_test::Tool {};

cRun good(std::string const &out) { return {0, out, ""}; }

// --- whole files ---

TEST_F(ToolFmt, prints_a_formatted_file_unchanged) {
    for (std::string const name : {"device.attr", "testplan.attr", "waterworks.attr"}) {
        write_example(name);
        EXPECT_EQ(run({"fmt", "--trailing-blanks", name}), good(read(name)));
        EXPECT_EQ(run({"fmt", "--check", name}), good(""));
        cRun const trimmed = run({"fmt", name});
        EXPECT_EQ(trimmed.err, "");
        EXPECT_EQ(trimmed.out.find(" \n"), std::string::npos);
        write("trimmed", trimmed.out);
        EXPECT_EQ(run({"fmt", "--check", "trimmed"}), good(""));
    }
}

TEST_F(ToolFmt, preserves_everything_of_a_handwritten_file) {
    write_example("settings.attr");
    EXPECT_EQ(run({"fmt", "settings.attr"}),
              good(bytes_of(test::source_file("tests/tool/data/settings.out"))));
    EXPECT_EQ(run({"fmt", "--check", "settings.attr"}),
              (cRun{1, bytes_of(test::source_file("tests/tool/data/settings.changes")), ""}));
}

TEST_F(ToolFmt, writes_several_files_in_order_and_the_worst_status_counts) {
    write("a", "1");
    write("b", "[2]");
    write("c", "3; lost");
    EXPECT_EQ(run({"fmt", "a", "b"}), good("1\n[2, ]\n"));
    EXPECT_EQ(run({"fmt", "c", "a"}),
              (cRun{1, "3\n1\n", "c:1:4: error: text after the first value would be lost\n"}));
    EXPECT_EQ(run({"fmt", "a", "nowhere", "c"}),
              (cRun{2, "1\n3\n",
                    "nowhere: error: cannot read: No such file or directory\n"
                    "c:1:4: error: text after the first value would be lost\n"}));
}

TEST_F(ToolFmt, reads_the_standard_input) {
    EXPECT_EQ(run({"fmt", "-"}, {.input = "{a=1}"}), good("{a= 1; }\n"));
    EXPECT_EQ(run({"fmt", "--check", "-"}, {.input = "{a=1}"}),
              (cRun{1, "-:1: would change\n- {a=1}\n+ {a= 1; }\n", ""}));
    EXPECT_EQ(run({"fmt", "-"}, {.input = "{a="}).err.substr(0, 21), "-:1:4: error: Pattern");
    write("f", "[1]");
    EXPECT_EQ(run({"fmt", "f", "-"}, {.input = "2"}), good("[1, ]\n2\n"));
}

TEST_F(ToolFmt, check_reports_each_range_that_would_change) {
    write("f", "{\n  a= 1;\n  b=2;\n  c= 3;\n  d = 4;\n  e= 5;}\n");
    EXPECT_EQ(run({"fmt", "--check", "f"}), (cRun{1,
                                                  "f:3: would change\n-   b=2;\n+   b= 2;\n"
                                                  "f:5: would change\n-   d = 4;\n-   e= 5;}\n"
                                                  "+   d= 4;\n+   e= 5;\n+ }\n",
                                                  ""}));
    write("f", "{\n  a= 1;\n}");
    EXPECT_EQ(run({"fmt", "--check", "f"}),
              (cRun{1, "f: would change: the line end of the last line\n", ""}));
    write("f", "{\n  a= 1;\n}\n");
    EXPECT_EQ(run({"fmt", "--check", "f"}), good(""));
}

TEST_F(ToolFmt, check_of_a_long_file_may_report_changes_everywhere) {
    std::string text = "{", reported;
    for (int i = 0; i < 3000; ++i)
        text += "\n  k" + std::to_string(i) + "=" + std::to_string(i) + ";";
    write("f", text + "\n}\n");
    cRun const run = this->run({"fmt", "--check", "f"});
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(run.out.substr(0, 50), "f:2: would change\n-   k0=0;\n-   k1=1;\n-   k2=2;\n- ");
    EXPECT_EQ(std::count(run.out.begin(), run.out.end(), '\n'), 6001);
}

// --- scalars and layout ---

TEST_F(ToolFmt, values_of_all_kinds_may_be_without_a_container) {
    EXPECT_EQ(fmt("5"), good("5\n"));
    EXPECT_EQ(fmt("-5"), good("-5\n"));
    EXPECT_EQ(fmt("0x10"), good("16\n"));
    EXPECT_EQ(fmt("1.5"), good("1.50000\n"));
    EXPECT_EQ(fmt("1.5f"), good("1.50000f\n"));
    EXPECT_EQ(fmt("true"), good("true\n"));
    EXPECT_EQ(fmt("'true'"), good("\"true\"\n"));
    EXPECT_EQ(fmt("'a b'"), good("\"a b\"\n"));
    EXPECT_EQ(fmt("word"), good("word\n"));
    EXPECT_EQ(fmt("''"), good("\"\"\n"));
    EXPECT_EQ(fmt("#nil"), good("#nil\n"));
    EXPECT_EQ(fmt("#true"), good("#true\n"));
    EXPECT_EQ(fmt("int(3)"), good("3\n"));
    EXPECT_EQ(fmt("{}"), good("{}\n"));
    EXPECT_EQ(fmt("[]"), good("[]\n"));
    EXPECT_EQ(fmt("<>"), good("<>\n"));
    EXPECT_EQ(fmt("{\n}"), good("{\n}\n"));
}

TEST_F(ToolFmt, preserves_containers_on_one_line_and_on_many_lines) {
    EXPECT_EQ(fmt("{a=[1,2];b=[\n1,2];}"),
              good("{\n  a= [1, 2, ];\n  b= [\n      1,\n      2,\n  ];\n}\n"));
    EXPECT_EQ(fmt("< <1>,[2]>"), good("< <1, >, [2, ], >\n"));
}

TEST_F(ToolFmt, numbers_are_written_exactly) {
    EXPECT_EQ(fmt("{a=0.12345678901234567;b=1.0000001f;c=123456.0;d='x\\\ny'}"),
              good("{\n  a= 0.12345678901234566;\n  b= 1.0000001f;\n  c= 123456.;\n  d= "
                   "\"x\\\ny\";\n}\n"));
}

TEST_F(ToolFmt, preserves_bytes_from_128_on_in_strings_and_comments) {
    EXPECT_EQ(fmt("{a='\xC3\xA9\xFF'; // \xE9\n}"), good("{\n  a= \"\xC3\xA9\xFF\"; // \xE9\n}\n"));
}

TEST_F(ToolFmt, preserves_lines_of_a_megabyte) {
    std::string const line = times("x ", 500000) + "x";
    EXPECT_EQ(fmt("['" + line + "']"), good("[\"" + line + "\", ]\n"));
    EXPECT_EQ(fmt("{ // " + line + "\n}"), good("{ // " + line + "\n}\n"));
}

TEST_F(ToolFmt, carriage_returns_are_removed) {
    EXPECT_EQ(fmt("// head\r\n\r\n{ // map\r\n  a= 1; // one\r\n  b= [\r\n];\r\n}\r\n"),
              good("// head\n\n{ // map\n  a= 1; // one\n  b= [\n  ];\n}\n"));
    EXPECT_EQ(fmt("{a=1; /* x\r\ny *\r/ */\n}"), good("{\n  a= 1; /* x\ny * / */\n}\n"));
    EXPECT_EQ(fmt("/* *\r/ */\r\n1"), good("/* *\r/ */\n1\n"));
}

// --- before and after the value ---

TEST_F(ToolFmt, preserves_a_comment_before_the_value_with_its_separator) {
    EXPECT_EQ(fmt("// one\n// two\n{}"), good("// one\n// two\n{}\n"));
    EXPECT_EQ(fmt("// one\n\n{}"), good("// one\n\n{}\n"));
    EXPECT_EQ(fmt("\n\n  // one\n\n\n\n  {}"), good("// one\n\n{}\n"));
    EXPECT_EQ(fmt("// one\n\n// two\n/* three\n */\n5"),
              good("// one\n\n// two\n/* three\n */\n5\n"));
    EXPECT_EQ(fmt("/* one */ {}"), good("/* one */ {}\n"));
    EXPECT_EQ(fmt("/* one */{}"), good("/* one */ {}\n"));
    EXPECT_EQ(fmt("/* one */ /* two */\n{a=1}"), good("/* one */ /* two */\n{a= 1; }\n"));
}

TEST_F(ToolFmt, one_separator_after_the_value_belongs_to_it) {
    EXPECT_EQ(fmt("5;"), good("5\n"));
    EXPECT_EQ(fmt("{};\n"), good("{}\n"));
    EXPECT_EQ(fmt("#nil,"), good("#nil\n"));
    EXPECT_EQ(fmt("int(5);"), good("5\n"));
}

TEST_F(ToolFmt, reports_text_after_the_value_once) {
    auto const reported = [](std::string const &out, std::string const &place) {
        return cRun{1, out, "f:" + place + ": error: text after the first value would be lost\n"};
    };
    EXPECT_EQ(fmt("{}\n{a=1}\n{b=2}\n"), reported("{}\n", "2:1"));
    EXPECT_EQ(fmt("5;;"), reported("5\n", "1:3"));
    EXPECT_EQ(fmt("{};,"), reported("{}\n", "1:4"));
    EXPECT_EQ(fmt("a=1"), reported("a\n", "1:2"));
    EXPECT_EQ(fmt("5 }"), reported("5\n", "1:3"));
    EXPECT_EQ(fmt("5]"), reported("5\n", "1:2"));
    EXPECT_EQ(fmt("word >"), reported("word\n", "1:6"));
    EXPECT_EQ(fmt("{}}"), reported("{}\n", "1:3"));
    EXPECT_EQ(fmt("[1]\n]"), reported("[1, ]\n", "2:1"));
    EXPECT_EQ(fmt("int(3))"), reported("3\n", "1:7"));
    EXPECT_EQ(fmt("#nil ]"), reported("#nil\n", "1:6"));
    EXPECT_EQ(fmt("{} )"), reported("{}\n", "1:4"));
    EXPECT_EQ(fmt("{} \xE9"), reported("{}\n", "1:4"));
    EXPECT_EQ(fmt("5 \xE9"), reported("5\n", "1:3"));
    EXPECT_EQ(fmt(std::string("5\0", 2)), reported("5\n", "1:2"));
}

TEST_F(ToolFmt, preserves_comments_before_the_text_after_the_value) {
    EXPECT_EQ(fmt("{} // one\n{ // two\n}"),
              (cRun{1, "{} // one\n", "f:2:1: error: text after the first value would be lost\n"}));
}

TEST_F(ToolFmt, an_entry_that_cannot_be_written_is_reported) {
    EXPECT_EQ(fmt("{P= attlist(x= attspec(default= 1)); a= P(x= 2); P= attlist(w= "
                  "attspec(default= 1)); b= 2}"),
              (cRun{1, "{\n  P= attlist(\n      w= attspec(default=1; );\n  );\n  b= 2;\n}\n",
                    "f: error: Value cannot be written, path : /a [0x40000001]\n"}));
}

TEST_F(ToolFmt, keys_that_begin_with_a_hash_sign_are_quoted) {
    EXPECT_EQ(fmt("{'#a'=1;\"#\"=#cRef(/\"#a\")}"), good("{\"#a\"= 1; \"#\"= #cRef(/\"#a\"); }\n"));
}

// --- plain text ---

TEST_F(ToolFmt, canonical_prints_only_the_plain_writers_bytes) {
    EXPECT_EQ(run_on("{a=1.5;b=[\n]}", {"fmt", "--canonical"}),
              good("{\n  a= 1.50000;\n  b= [\n  ]; \n}"));
    EXPECT_EQ(run_on("5", {"fmt", "--canonical"}), good("5"));
}

TEST_F(ToolFmt, canonical_counts_lost_digits_and_words_as_lost) {
    std::string const changed = "f: error: the new text would not read as the same value: digits, "
                                "bits or strings would differ\n";
    EXPECT_EQ(run_on("[0.1234567]", {"fmt", "--canonical"}), (cRun{1, "[0.123457, ]", changed}));
    EXPECT_EQ(run_on("['true']", {"fmt", "--canonical"}), (cRun{1, "[true, ]", changed}));
    EXPECT_EQ(run_on("['x\\\ny']", {"fmt", "--canonical"}),
              (cRun{1, "[\n  \"x\ny\",\n]", changed}));
    EXPECT_EQ(run_on("// head\n[1]", {"fmt", "--canonical"}),
              (cRun{1, "[1, ]", "f:1:1: error: this comment would be lost: // head\n"}));
}

TEST_F(ToolFmt, check_compares_with_canonical_text) {
    EXPECT_EQ(run_on("[0.1234567, ]\n", {"fmt", "--canonical", "--check"}),
              (cRun{1, "f:1: would change\n- [0.1234567, ]\n+ [0.123457, ]\n",
                    "f: error: the new text would not read as the same value: digits, bits or "
                    "strings would differ\n"}));
    EXPECT_EQ(run_on("[1, ]", {"fmt", "--canonical", "--check"}), good(""));
}

// --- nothing to write ---

TEST_F(ToolFmt, a_file_without_a_value_is_not_written) {
    cRun const none{2, "", "f: error: the file contains no value\n"};
    EXPECT_EQ(fmt(""), (cRun{2, "", "f: error: the file is empty\n"}));
    EXPECT_EQ(fmt(" \n\t\r\n"), none);
    EXPECT_EQ(fmt("// only\n/* comments */\n"), none);
    EXPECT_EQ(fmt("]"), none);
    EXPECT_EQ(fmt(";"), none);
    EXPECT_EQ(fmt("\xEF\xBB\xBF"), fmt(""));
    EXPECT_EQ(fmt("\xEF\xBB"),
              (cRun{2, "",
                    "f:1:1: error: byte 0xef outside of strings and comments\n"
                    "f:1:1: note: write a word with letters outside of ASCII in quotes: "
                    "\"\\xef\\xbb\"\n"}));
    EXPECT_EQ(fmt("\xEF\xBB{a=1;}"), fmt("\xEF\xBB"));
}

TEST_F(ToolFmt, a_file_with_errors_is_not_written) {
    EXPECT_EQ(fmt("{a=1 // open\n b=2}"),
              (cRun{2, "",
                    "f:1:4: error: Missing delimiter after value: 1 [0x40000002]\n"
                    "f:1:5: note: a ; or , is missing here\n"}));
    EXPECT_EQ(fmt("{a=1; /* open }"), (cRun{2, "",
                                            "f:1:7: error: this comment is not closed\n"
                                            "f:1:7: note: 1 more error follows from it\n"}));
    EXPECT_EQ(fmt("{a=1} /* open"), (cRun{2, "", "f:1:7: error: this comment is not closed\n"}));
    EXPECT_EQ(run_on("{a=1 b=2}", {"fmt", "--check"}),
              (cRun{2, "",
                    "f:1:4: error: Missing delimiter after value: 1 [0x40000002]\n"
                    "f:1:5: note: a ; is missing here\n"}));
}

} // namespace

// `get`: values at paths.

#include "tests/tool/tool_run.h"

using tool_test::cRun;
using tool_test::times;

namespace {

class ToolGet : public tool_test::Tool {
  protected:
    cRun get(std::string const &bytes, std::vector<std::string> arguments) const {
        write("f", bytes);
        arguments.insert(arguments.begin(), {"get", "f"});
        return run(std::move(arguments));
    }
    // With these arguments the command succeeds and prints this.
    std::string value(std::string const &bytes, std::vector<std::string> arguments) const {
        cRun const run = get(bytes, std::move(arguments));
        EXPECT_EQ(run.status, 0);
        EXPECT_EQ(run.err, "");
        return run.out;
    }
};

TEST_F(ToolGet, scalars_are_printed_raw) {
    EXPECT_EQ(value("{a= -5}", {"a"}), "-5\n");
    EXPECT_EQ(value("{a= 0x10}", {"a"}), "16\n");
    EXPECT_EQ(value("{a= true; b= false}", {"a", "b"}), "true\nfalse\n");
    EXPECT_EQ(value("{a= 1.5}", {"a"}), "1.50000\n");
    EXPECT_EQ(value("{a= 0.1234567890123}", {"a"}), "0.1234567890123\n");
    EXPECT_EQ(value("{a= 2.5f}", {"a"}), "2.50000\n");
    EXPECT_EQ(value("{a= 'x \\'y\\' \\\\ z'}", {"a"}), "x 'y' \\ z\n");
    EXPECT_EQ(value("{a= 'true'; b= ''; c= 'two\\\nlines'}", {"a", "b", "c"}),
              "true\n\ntwo\nlines\n");
}

TEST_F(ToolGet, constants_are_printed_by_name) {
    std::string const text = "{a= #true; b= #false; c= #nil}";
    EXPECT_EQ(value(text, {"a", "b", "c"}), "true\nfalse\n#nil\n");
    EXPECT_EQ(value(text, {"--text", "a", "b", "c"}), "#true\n#false\n#nil\n");
}

TEST_F(ToolGet, text_is_the_written_form) {
    EXPECT_EQ(value("{a= 'x y'; b= 2.5f; c= 'true'; d= word; e= true}",
                    {"--text", "a", "b", "c", "d", "e"}),
              "\"x y\"\n2.50000f\n\"true\"\nword\ntrue\n");
}

TEST_F(ToolGet, containers_are_text) {
    EXPECT_EQ(value("{a=[1,2];b=<x>;c={\n d=1; // one\n}}", {"a", "b", "c"}),
              "[1, 2, ]\n<x, >\n{\n  d= 1; // one\n}\n");
}

TEST_F(ToolGet, a_value_shared_inside_a_container_is_written_once) {
    EXPECT_EQ(value("{a={b=[1];c=#cRef(/a/b)};d=#cRef(/a/b)}", {"a", "d"}),
              "{b= [1, ]; c= #cRef(/b); }\n[1, ]\n");
}

TEST_F(ToolGet, paths_lead_to_values) {
    std::string const text = "{a=[x,{'two words'=7;8=y}]}";
    EXPECT_EQ(value(text, {"/a/0", "a/0", " a / 0 ", "a/1/'two words'", "a/1/8"}),
              "x\nx\nx\n7\ny\n");
}

TEST_F(ToolGet, two_slashes_are_an_error) {
    EXPECT_EQ(get("{a={}}", {"a//b"}),
              (cRun{2, "",
                    "f: error: path 'a//b' contains // outside of quotes, which begins a "
                    "comment\n"}));
}

TEST_F(ToolGet, an_absent_value_is_reported) {
    std::string const text = "{a=[1];b=5}";
    EXPECT_EQ(get(text, {"c"}), (cRun{1, "", "f: error: nothing at path 'c'\n"}));
    EXPECT_EQ(get(text, {"c/d"}), (cRun{1, "", "f: error: nothing at path 'c/d'\n"}));
    EXPECT_EQ(get(text, {"a/1"}), (cRun{1, "", "f: error: nothing at path 'a/1'\n"}));
    EXPECT_EQ(get(text, {"c", "b", "d"}),
              (cRun{1, "5\n", "f: error: nothing at path 'c'\nf: error: nothing at path 'd'\n"}));
}

TEST_F(ToolGet, a_path_into_a_scalar_finds_nothing) {
    EXPECT_EQ(get("{b=5}", {"b/x"}), (cRun{1, "", "f: error: nothing at path 'b/x'\n"}));
    EXPECT_EQ(get("{b=5}", {"b/x/y"}), (cRun{1, "", "f: error: nothing at path 'b/x/y'\n"}));
    EXPECT_EQ(get("5", {"b"}), (cRun{1, "", "f: error: nothing at path 'b'\n"}));
    EXPECT_EQ(value("{b=5}", {"b/x", "--default", "7"}), "7\n");
}

TEST_F(ToolGet, default_replaces_an_absent_value) {
    EXPECT_EQ(value("{a=1}", {"--default", "none at all", "b", "a"}), "none at all\n1\n");
    EXPECT_EQ(value("{a=1}", {"--default", "", "b"}), "\n");
    EXPECT_EQ(value("{a=1}", {"--default", "-5", "b"}), "-5\n");
    EXPECT_EQ(value("{a=#nil}", {"--default", "x", "a"}), "#nil\n") << "nil is a value";
}

std::string const expected =
    " where a key is expected; a key is a word, a number or a string in quotes\n";

TEST_F(ToolGet, an_invalid_path_is_reported) {
    EXPECT_EQ(get("{a=1}", {""}),
              (cRun{2, "", "f: error: the path is empty; / is the outermost value\n"}));
    EXPECT_EQ(get("{a=1}", {"a/"}),
              (cRun{2, "", "f: error: path 'a/' ends with a /: remove it, or add a key\n"}));
    EXPECT_EQ(get("{a={}}", {"a/ /"}), (cRun{2, "", "f: error: path 'a/ /' has '/'" + expected}));
    EXPECT_EQ(get("{a=1}", {"=", "a", "--default", "5"}),
              (cRun{2, "1\n", "f: error: path '=' has '='" + expected}));
}

TEST_F(ToolGet, long_paths_are_shortened_in_the_middle) {
    std::string const path = "a" + times("/bcdefghij", 100);
    std::string const shown = path.substr(0, 57) + " ... " + path.substr(path.size() - 57);
    EXPECT_EQ(get("{a=1}", {path}), (cRun{1, "", "f: error: nothing at path '" + shown + "'\n"}));
    std::string const bad = "= " + path;
    EXPECT_EQ(get("{a=1}", {bad}),
              (cRun{2, "",
                    "f: error: path '" + bad.substr(0, 57) + " ... " + bad.substr(bad.size() - 57) +
                        "' has '='" + expected}));
}

TEST_F(ToolGet, canonical_prints_the_plain_writers_bytes) {
    std::string const text = "{a=0.1234567;b='true';c={x=0.1234567}}";
    EXPECT_EQ(value(text, {"a", "c/x"}), "0.1234567\n0.1234567\n");
    EXPECT_EQ(value(text, {"--canonical", "a"}), "0.123457");
    EXPECT_EQ(value(text, {"--canonical", "c"}), "{x= 0.123457; }");
    EXPECT_EQ(value(text, {"--canonical", "--text", "b", "a"}), "true\n0.123457");
    EXPECT_EQ(get(text, {"--canonical", "d"}), (cRun{1, "", "f: error: nothing at path 'd'\n"}));
}

TEST_F(ToolGet, the_input_may_be_the_standard_input) {
    EXPECT_EQ(run({"get", "-", "a"}, {.input = "{a=1}"}), (cRun{0, "1\n", ""}));
    EXPECT_EQ(run({"get", "-", "b"}, {.input = "{a=1}"}),
              (cRun{1, "", "-: error: nothing at path 'b'\n"}));
}

TEST_F(ToolGet, text_after_the_value_is_ignored) { EXPECT_EQ(value("{a=1} rest", {"a"}), "1\n"); }

TEST_F(ToolGet, a_file_with_errors_prints_nothing) {
    EXPECT_EQ(get("{a=1;b=foo(2)}", {"a"}),
              (cRun{2, "",
                    "f:1:8: error: Value with unknown type='foo [0x40000005]\n"
                    "f:1:8: note: 1 more error follows from it\n"}));
    EXPECT_EQ(get("", {"a"}), (cRun{2, "", "f: error: the file is empty\n"}));
    EXPECT_EQ(run({"get", "nowhere", "a", "--default", "1"}),
              (cRun{2, "", "nowhere: error: cannot read: No such file or directory\n"}));
}

TEST_F(ToolGet, values_of_a_real_file_are_printed) {
    write_example("device.attr");
    EXPECT_EQ(run({"get", "device.attr", "bus/baud", "sensors/3/position", "location/manual",
                   "interlocks/3", "limits/temperature"}),
              (cRun{0,
                    "115200\n[0.120000f, 0.850000f, 0.400000f, ]\nC:\\Docs\\KC340\\manual.pdf\n"
                    "{when= \"true\"; off= <>; latching= false; }\n"
                    "{low= -70.0000; high= 180.000; unit= \"\xC2\xB0"
                    "C\"; }\n",
                    ""}));
}

} // namespace

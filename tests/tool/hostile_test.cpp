// Files made to break the tool: it reports them in time and with one of its exit codes.

#include "tests/tool/tool_run.h"

#include <algorithm>
#include <random>

using tool_test::cRun;
using tool_test::times;

namespace {

class ToolHostile : public tool_test::Tool {
  protected:
    // The output of `check`, a line or two for each of a hundred errors.
    std::string all_reported(std::string const &text) const {
        cRun const check = run_on(text, {"check", "--all"});
        EXPECT_EQ(check.status, 1);
        EXPECT_EQ(check.out, "");
        EXPECT_LE(std::count(check.err.begin(), check.err.end(), '\n'), 201);
        return check.err;
    }
    std::string reported(std::string const &text) const { // the first line
        std::string const all = all_reported(text);
        return all.substr(0, all.find('\n'));
    }
    // The line about the depth, after those about the containers that end there.
    std::string reported_depth(std::string const &text) const {
        std::string const all = all_reported(text);
        size_t const depth = all.find("Nesting");
        if (depth == all.npos || all.find("Nesting", depth + 1) != all.npos) return "not one";
        size_t const start = all.rfind('\n', depth) + 1;
        return all.substr(start, all.find('\n', start) - start);
    }
    // The other commands refuse it, too.
    void refused() const {
        for (std::vector<std::string> const &arguments :
             std::vector<std::vector<std::string>>{{"fmt", "f"}, {"get", "f", "a"}}) {
            cRun const run = this->run(arguments);
            EXPECT_EQ(run.status, 2);
            EXPECT_EQ(run.out, "");
            EXPECT_EQ(run.err.find("ended too early"), std::string::npos);
        }
    }
};

// A path of a thousand steps as the tool prints it.
std::string shown(std::string const &step) {
    std::string const path = times(step, 1000);
    return path.substr(0, 57) + " ... " + path.substr(path.size() - 57);
}

TEST_F(ToolHostile, a_hundred_thousand_opening_brackets_are_refused) {
    std::string const deep = "f:1:1001: error: Nesting is deeper than 1000, path : ";
    EXPECT_EQ(reported_depth(times("[", 100000)), deep + shown("/0") + " [0x40000001]");
    refused();
    EXPECT_EQ(reported_depth(times("[", 100000) + times("]", 100000)),
              deep + shown("/0") + " [0x40000001]");
    refused();
    EXPECT_EQ(reported_depth(times("{", 100000)), deep + " [0x40000001]");
    EXPECT_EQ(reported(times("<", 100000)), "f:1:1: error: Unexpected token '<< [0x40000002]");
    EXPECT_EQ(run({"tokens", "f"}).status, 0);
}

TEST_F(ToolHostile, a_hundred_thousand_nested_maps_are_refused) {
    EXPECT_EQ(reported_depth(times("{a=", 100000)),
              "f:1:3001: error: Nesting is deeper than 1000, path : " + shown("/a") +
                  " [0x40000001]");
    refused();
}

// No closing bracket has the indentation of an open one, so the search may visit all of them.
TEST_F(ToolHostile, a_hundred_thousand_closing_brackets_may_match_no_indentation) {
    std::string const text = "{}\n" + times("{\n", 100000) + times(" }\n", 100000) + "}\n";
    EXPECT_EQ(run_on(text, {"check"}),
              (cRun{1, "",
                    "f:2:1: error: text after the first value is not read\n"
                    "f:2:1: note: a file has one value: write several in { ... } or [ ... ]\n"}));
}

TEST_F(ToolHostile, a_hundred_thousand_nested_typed_values_are_refused) {
    EXPECT_EQ(reported(times("int(", 100000)),
              "f:1:4: error: Closing symbol is missed in type int, path:  [0x40000001]");
}

TEST_F(ToolHostile, a_megabyte_of_quotes_and_backslashes_is_handled) {
    EXPECT_EQ(reported(times("\\\"", 500000)), "f:1:1: error: Unexpected token '\\ [0x40000002]");
}

TEST_F(ToolHostile, a_hundred_thousand_comments_after_constants_are_handled) {
    std::string const text = "{\n" + times("a=#nil; // x\n", 100000) + "}";
    std::string const below = times("           // x\n", 99999);
    EXPECT_EQ(fmt(text), (cRun{0, "{\n  a= #nil; // x\n" + below + "}\n", ""}));
    cRun const run = run_on(text, {"fmt", "--canonical"});
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.out, "{\n  a= #nil;\n}");
    EXPECT_EQ(std::count(run.err.begin(), run.err.end(), '\n'), 101);
    EXPECT_EQ(run.err.substr(run.err.rfind("f: ")), "f: error: 99900 more\n");
}

TEST_F(ToolHostile, junk_is_reported) {
    std::mt19937_64 random(7);
    for (int i = 0; i < 20; ++i) {
        std::string bytes(200 + static_cast<size_t>(random() % 2000), '\0');
        for (char &byte : bytes) byte = static_cast<char>(random());
        write("f", bytes);
        for (std::string const command : {"fmt", "check", "tokens"}) {
            cRun const run = this->run({command, "f"});
            EXPECT_LE(run.status, 2);
            EXPECT_EQ(run.err.find("ended too early"), std::string::npos) << "junk " << i;
        }
    }
}

TEST_F(ToolHostile, a_truncated_real_file_is_reported) {
    std::string const text = tool_test::bytes_of(test::source_file("examples/settings.attr"));
    for (size_t size = 0; size < text.size(); size += 61) {
        cRun const run = fmt(text.substr(0, size));
        EXPECT_EQ(run.status, 2) << size;
        EXPECT_EQ(run.out, "") << size;
        EXPECT_NE(run.err, "") << size;
    }
}

} // namespace

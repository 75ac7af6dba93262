// Files that begin with a byte order mark: reading skips it, and edits preserve it.

#include "tests/tool/tool_run.h"

namespace {

using tool_test::cRun;

std::string const mark = "\xef\xbb\xbf", text = "// c\n{ a = 1; b = [1, 2]; }\n";

class ByteOrderMark : public tool_test::Tool {
  protected:
    ByteOrderMark() { write("f", mark + text); }

    std::string out(std::vector<std::string> arguments) const {
        cRun const run = this->run(std::move(arguments));
        EXPECT_EQ(run.status, 0);
        EXPECT_EQ(run.err, "");
        return run.out;
    }
};

TEST_F(ByteOrderMark, commands_that_read_ignore_it) {
    EXPECT_EQ(out({"check", "f"}), "");
    EXPECT_EQ(out({"get", "f", "a"}), "1\n");
    EXPECT_EQ(out({"find", "f", "a"}), "a = 1;\n");
    EXPECT_EQ(out({"where", "f", "a"}), "2:7\n");
    EXPECT_EQ(out({"at", "f", "2:3"}), "path      /a\ntype      int\n");
    EXPECT_EQ(run({"to-json", "f"}).out, "{\"a\": 1, \"b\": [1, 2]}\n");
    EXPECT_EQ(run_on(mark + "{ a = ; }", {"check"}).err.substr(0, 6), "f:1:7:");
}

TEST_F(ByteOrderMark, edits_preserve_it) {
    EXPECT_EQ(out({"set", "f", "a = 2"}), mark + "// c\n{ a = 2; b = [1, 2]; }\n");
    EXPECT_EQ(out({"del", "f", "a"}), mark + "// c\n{ b = [1, 2]; }\n");
    EXPECT_EQ(out({"mv", "f", "a", "c"}), mark + "// c\n{ c = 1; b = [1, 2]; }\n");
    EXPECT_EQ(out({"ins", "f", "b/0", "before", "0"}), mark + "// c\n{ a = 1; b = [0, 1, 2]; }\n");
    EXPECT_EQ(out({"fmt", "f"}), mark + "// c\n{a= 1; b= [1, 2, ]; }\n");
    EXPECT_EQ(run({"set", "-i", "f", "a = 1"}), (cRun{0, "", ""}));
    EXPECT_EQ(read("f"), mark + text);
}

TEST_F(ByteOrderMark, the_plain_output_omits_it) {
    EXPECT_EQ(run({"fmt", "--canonical", "f"}).out, "{a= 1; b= [1, 2, ]; }");
}

TEST_F(ByteOrderMark, statements_and_merged_files_may_begin_with_it) {
    write("s", mark + "a = 3");
    EXPECT_EQ(out({"set", "f", "-f", "s"}), mark + "// c\n{ a = 3; b = [1, 2]; }\n");
    write("g", mark + "{ a = 3; }");
    EXPECT_EQ(run({"merge", "f", "g"}).status, 0);
}

} // namespace

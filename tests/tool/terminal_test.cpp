// Output that appears only on a terminal: colours, and progress with a large file.

#include "tests/support/sanitized.h"
#include "tests/tool/terminal.h"
#include "tests/tool/tool_run.h"

#include <sys/resource.h>

using tool_test::cRun;
using tool_test::cTerminal;
using tool_test::times;

namespace {

class ToolTerminal : public tool_test::Tool {
  protected:
    // The output on a terminal that is the standard error, or both outputs.
    std::string on_terminal(std::vector<std::string> arguments,
                            std::function<void()> const &prepare = {}) const {
        cTerminal const terminal;
        auto const connect = [&] {
            ::setenv("TERM", "xterm", 1);
            ::unsetenv("NO_COLOR");
            ::dup2(terminal.descriptor(), STDERR_FILENO);
            if (prepare) prepare();
        };
        EXPECT_EQ(run(std::move(arguments), {.prepare = connect}).err, "");
        return terminal.printed();
    }
};

TEST_F(ToolTerminal, messages_are_coloured) {
    std::string const plain = "f: error: cannot read: No such file or directory\r\n";
    EXPECT_EQ(on_terminal({"check", "f"}),
              "f: \x1b[1;31merror:\x1b[0m cannot read: No such file or directory\r\n");
    EXPECT_EQ(on_terminal({"check", "f", "--color=never"}), plain);
    EXPECT_EQ(on_terminal({"check", "f"}, [] { ::setenv("NO_COLOR", "1", 1); }), plain);
    EXPECT_EQ(on_terminal({"check", "f"}, [] { ::setenv("TERM", "dumb", 1); }), plain);
    EXPECT_EQ(on_terminal({"check", "f"}, [] { ::setenv("NO_COLOR", "", 1); }),
              on_terminal({"check", "f", "--color=auto"}));
}

// 50 MiB, read in pieces of 1 MiB, so that each piece is 2 %.
TEST_F(ToolTerminal, a_progress_line_is_shown_for_a_large_file_and_removed) {
    constexpr int pieces = 50;
    std::string const line = "//" + std::string(1021, 'x') + "\n";
    write("f", "[1]" + line.substr(0, 1020) + "\n" + times(line, pieces * 1024 - 1));
    EXPECT_EQ(std::filesystem::file_size(path("f")), pieces << 20);
    std::string expected, before;
    for (int i = 1; i <= pieces; ++i) {
        std::string const next = "f: " + std::to_string(2 * i) + " % read";
        expected += "\r" + std::string(before.size(), ' ') + "\r" + next;
        before = next;
    }
    expected += "\r" + std::string(before.size(), ' ') + "\r";
    EXPECT_EQ(on_terminal({"check", "f"}), expected);
}

TEST_F(ToolTerminal, no_progress_line_is_shown_for_a_small_file) {
    write("f", "[1]");
    EXPECT_EQ(on_terminal({"check", "f"}), "");
}

TEST_F(ToolTerminal, the_memory_of_tokens_does_not_grow_with_the_file) {
    write("f", times("1;\n", 200'000)); // 400,000 tokens, whose lines are 10 MB
    tool_test::cMemory all;
    tool_test::cStart const start{.out = all.descriptor(), .prepare = [] {
                                      rlimit const limit{8'000'000, 8'000'000};
                                      // Sanitizers need more memory themselves.
                                      if (!test::sanitized) ::setrlimit(RLIMIT_DATA, &limit);
                                  }};
    EXPECT_EQ(run({"tokens", "f"}, start), (cRun{0, "", ""}));
    std::string const lines = all.bytes();
    EXPECT_EQ(std::count(lines.begin(), lines.end(), '\n'), 400'001);
    EXPECT_TRUE(lines.ends_with("TOKEN:0:400000:200001:0 ''\n")) << lines.substr(lines.size() - 60);
}

} // namespace

// Whole sessions at a shell: each file of data/sessions/ has commands after "$ ", and below each
// command its whole output, on standard output and standard error, and its exit status in brackets
// if it is not 0. A session runs in an empty folder, with the tool in the path.

#include "tests/tool/tool_run.h"

#include <sstream>

namespace {

class ToolSessions : public tool_test::Tool, public testing::WithParamInterface<std::string> {
  protected:
    // The commands of a session, as a script that prints the session.
    static std::string script_of(std::string const &session) {
        std::string script = "PATH='" + test::binary_file("bin") + "':$PATH\n";
        std::istringstream lines(session);
        for (std::string line; std::getline(lines, line);) {
            if (!line.starts_with("$ ")) continue;
            script += "cat <<'-=-'\n" + line + "\n-=-\n" + line.substr(2) +
                      "\nstatus=$?; [ $status = 0 ] || echo \"[$status]\"\n";
        }
        return script;
    }
};

TEST_P(ToolSessions, prints_the_output_shown_in_the_file) {
    std::string const shown =
        tool_test::bytes_of(test::source_file("tests/tool/data/sessions/" + GetParam()));
    tool_test::cMemory all;
    auto const one_output = [] {
        ::dup2(STDOUT_FILENO, STDERR_FILENO);
        tool_test::give_up_rights_over_files();
    };
    tool_test::cStart const start{
        .out = all.descriptor(), .prepare = one_output, .program = "/bin/sh"};
    ASSERT_EQ(run({"-c", script_of(shown)}, start).status, 0);
    std::string const copy = test::binary_file("tests/" + GetParam());
    if (all.bytes() != shown) std::ofstream(copy, std::ios::binary) << all.bytes();
    EXPECT_EQ(all.bytes(), shown) << "All that was printed is in " << copy;
}

INSTANTIATE_TEST_SUITE_P(All, ToolSessions,
                         testing::Values("files.session", "help.session", "messages.session",
                                         "report.session", "usage.session"),
                         [](auto const &test) {
                             return test.param.substr(0, test.param.find('.'));
                         });

} // namespace

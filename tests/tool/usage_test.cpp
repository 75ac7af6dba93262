// The command line itself: help, version, and what can't be understood.

#include "tests/tool/tool_run.h"

using tool_test::cRun;

namespace {

class ToolUsage : public tool_test::Tool {
  protected:
    // What a usage error tells; it is 2, and nothing is put out.
    std::string refused(std::vector<std::string> arguments) const {
        cRun const run = this->run(std::move(arguments));
        EXPECT_EQ(run.status, 2);
        EXPECT_EQ(run.out, "");
        return run.err;
    }
};

std::string with_hint(std::string const &text) {
    return text + "\nRun with --help for more information.\n";
}

TEST_F(ToolUsage, version) {
    EXPECT_EQ(run({"--version"}), (cRun{0, "Quorvanta v1.0.0\nby the Quorvanta developers\n", ""}));
}

TEST_F(ToolUsage, help_lists_the_commands_and_the_exit_codes) {
    cRun const help = run({"--help"});
    EXPECT_EQ(help,
              (cRun{0,
                    "Reads, checks and rewrites files of object trees.\n"
                    "Usage: qrv [OPTIONS] SUBCOMMAND\n"
                    "\n"
                    "Options:\n"
                    "  -h,--help                   Print this help message and exit\n"
                    "  --version                   Display program version information and exit\n"
                    "\n"
                    "Subcommands:\n"
                    "  fmt                         Write the value of a file in standard layout\n"
                    "  get                         Print the values at paths\n"
                    "  check                       Tell every error of a file\n"
                    "  tokens                      List the tokens of a file\n"
                    "\n"
                    "Exit codes: 0 done, found or clean; 1 absent, different or with findings; 2 "
                    "the work could\n"
                    "not be done. A file name of - is the standard input.\n",
                    ""}));
    EXPECT_EQ(run({"-h"}), help);
}

TEST_F(ToolUsage, help_of_fmt) {
    EXPECT_EQ(run({"fmt", "--help"}),
              (cRun{0,
                    "Write the value of a file in standard layout\n"
                    "Usage: qrv fmt [OPTIONS] FILE...\n"
                    "\n"
                    "Positionals:\n"
                    "  FILE TEXT ... REQUIRED      files to write anew\n"
                    "\n"
                    "Options:\n"
                    "  -h,--help                   Print this help message and exit\n"
                    "  --check Excludes: --in-place\n"
                    "                              only tell what would change\n"
                    "  -i,--in-place Excludes: --check\n"
                    "                              replace the file\n"
                    "  --force Needs: --in-place   replace it even where something is lost\n"
                    "  --canonical                 the plain writer's bytes: six digits, no last "
                    "line feed\n"
                    "  --max-errors INT:INT in [1 - 1000000]=100\n"
                    "                              messages for one file at most\n"
                    "\n"
                    "Examples:\n"
                    "  qrv fmt device.attr            writes it to standard output\n"
                    "  qrv fmt --check *.attr         is everything in layout?\n"
                    "  qrv fmt -i device.attr         rewrites the file, comments kept\n"
                    "Comments that can't be kept, and text behind the first value, are told with\n"
                    "their place; -i then refuses unless --force is given.\n",
                    ""}));
}

TEST_F(ToolUsage, help_of_get) {
    EXPECT_EQ(run({"get", "--help"}),
              (cRun{0,
                    "Print the values at paths\n"
                    "Usage: qrv get [OPTIONS] FILE PATH...\n"
                    "\n"
                    "Positionals:\n"
                    "  FILE TEXT REQUIRED          the file\n"
                    "  PATH TEXT ... REQUIRED      keys with / between them\n"
                    "\n"
                    "Options:\n"
                    "  -h,--help                   Print this help message and exit\n"
                    "  --text                      print the written form, strings in quotes\n"
                    "  --default TEXT              printed for what is absent\n"
                    "  --canonical                 the plain writer's bytes: six digits, no last "
                    "line feed\n"
                    "  --max-errors INT:INT in [1 - 1000000]=100\n"
                    "                              messages for one file at most\n"
                    "\n"
                    "Examples:\n"
                    "  qrv get device.attr bus/baud            a number, as it stands\n"
                    "  qrv get device.attr limits sensors/0    containers as text\n"
                    "  qrv get --default 8 device.attr slots   8 if there is no such key\n",
                    ""}));
}

TEST_F(ToolUsage, help_of_check) {
    EXPECT_EQ(run({"check", "--help"}),
              (cRun{0,
                    "Tell every error of a file\n"
                    "Usage: qrv check [OPTIONS] FILE...\n"
                    "\n"
                    "Positionals:\n"
                    "  FILE TEXT ... REQUIRED      files to check\n"
                    "\n"
                    "Options:\n"
                    "  -h,--help                   Print this help message and exit\n"
                    "  --max-errors INT:INT in [1 - 1000000]=100\n"
                    "                              messages for one file at most\n"
                    "\n"
                    "Example:\n"
                    "  qrv check *.attr\n",
                    ""}));
}

TEST_F(ToolUsage, help_of_tokens) {
    EXPECT_EQ(run({"tokens", "--help"}),
              (cRun{0,
                    "List the tokens of a file\n"
                    "Usage: qrv tokens [OPTIONS] FILE\n"
                    "\n"
                    "Positionals:\n"
                    "  FILE TEXT REQUIRED          the file\n"
                    "\n"
                    "Options:\n"
                    "  -h,--help                   Print this help message and exit\n"
                    "  --all                       comments and blanks too\n"
                    "  --max-errors INT:INT in [1 - 1000000]=100\n"
                    "                              messages for one file at most\n"
                    "\n"
                    "Example:\n"
                    "  qrv tokens --all device.attr\n"
                    "A line is TOKEN:code:position:line:column 'text'.\n",
                    ""}));
}

TEST_F(ToolUsage, a_command_is_needed) {
    EXPECT_EQ(refused({}), with_hint("A subcommand is required"));
    EXPECT_EQ(refused({"frob"}), with_hint("A subcommand is required"));
}

TEST_F(ToolUsage, arguments_that_are_missing) {
    EXPECT_EQ(refused({"fmt"}), with_hint("FILE is required"));
    EXPECT_EQ(refused({"check"}), with_hint("FILE is required"));
    EXPECT_EQ(refused({"tokens"}), with_hint("FILE is required"));
    EXPECT_EQ(refused({"get"}), with_hint("FILE is required"));
    EXPECT_EQ(refused({"get", "f"}), with_hint("PATH is required"));
    EXPECT_EQ(refused({"get", "f", "a", "--default"}),
              with_hint("--default: 1 required TEXT missing"));
}

TEST_F(ToolUsage, arguments_that_nobody_knows) {
    EXPECT_EQ(refused({"fmt", "f", "--frob"}),
              with_hint("The following argument was not expected: --frob"));
    EXPECT_EQ(refused({"tokens", "f", "g"}),
              with_hint("The following argument was not expected: g"));
    EXPECT_EQ(refused({"check", "f", "-i"}),
              with_hint("The following argument was not expected: -i"));
}

TEST_F(ToolUsage, options_that_exclude_or_need_each_other) {
    EXPECT_EQ(refused({"fmt", "-i", "--check", "f"}), with_hint("--check excludes --in-place"));
    EXPECT_EQ(refused({"fmt", "--force", "f"}), with_hint("--force requires --in-place"));
}

TEST_F(ToolUsage, limits_of_the_number_of_messages) {
    for (std::string const value : {"0", "1000001", "-1", "many"})
        EXPECT_EQ(refused({"check", "--max-errors", value, "f"}),
                  with_hint("--max-errors: Value " + value + " not in range 1 to 1000000"));
    EXPECT_EQ(run_on("1", {"check", "--max-errors", "1"}), (cRun{0, "", ""}));
    EXPECT_EQ(run_on("1", {"check", "--max-errors", "1000000"}), (cRun{0, "", ""}));
}

} // namespace

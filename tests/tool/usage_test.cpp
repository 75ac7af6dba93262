// The command line itself. data/sessions/ has the help texts and invalid command lines.

#include "tests/tool/tool_run.h"
#include "tools/qrv/output/exit_code.h"

#include <regex>

using tool_test::cRun;
using tool_test::usage_error;

namespace {

class ToolUsage : public tool_test::Tool {};

TEST_F(ToolUsage, examples_of_set_and_merge_work) {
    write_example("device.attr");
    write("site.attr", "{bus= {baud= 9600; }; site= Bonn; }");
    std::string const tool = test::binary_file("bin/qrv");
    int examples = 0;
    for (std::string const command : {"set", "merge"}) {
        std::istringstream help(run({command, "--help"}).out);
        for (std::string line; std::getline(help, line);) {
            if (line.rfind("  qrv " + command + " ", 0) != 0) continue;
            ++examples;
            std::string const shell =
                "( cd '" + folder_ + "'; '" + tool + "'" + line.substr(5) + "\n) >/dev/null 2>&1";
            int const status = std::system(shell.c_str());
            EXPECT_EQ(WEXITSTATUS(status), 0) << line;
        }
    }
    EXPECT_EQ(examples, 9);
}

TEST_F(ToolUsage, every_help_text_has_the_listed_exit_codes) {
    std::string const done = std::to_string(exit_done), found = std::to_string(exit_found),
                      failed = std::to_string(exit_failed);
    EXPECT_NE(run({"--help"})
                  .out.find("Exit codes: " + done + " done, found or clean; " + found +
                            " absent, different or with findings; " + failed +
                            " the work\ncould not be done."),
              std::string::npos);
    std::string named;
    for (char const *command : {"fmt", "set", "merge", "get", "find", "explain", "check", "tokens",
                                "types", "from-json", "to-json"}) {
        std::string const help = run({command, "--help"}).out;
        std::regex const code(R"((?:exit\s+code is|it is|It is) (\d+))");
        for (std::sregex_iterator at(help.begin(), help.end(), code), end; at != end; ++at)
            named += std::string(command) + " " + (*at)[1].str() + "; ";
    }
    EXPECT_EQ(named, "set " + failed + "; merge " + failed + "; find " + found + "; to-json " +
                         done + "; to-json " + found + "; to-json " + failed + "; ");
}

TEST_F(ToolUsage, examples_of_from_json_and_to_json_work) {
    write("data.json", R"({"items": [{"name": "Ann"}]})");
    EXPECT_EQ(run({"from-json", "data.json", "-o", "data.attr"}), (cRun{0, "", ""}));
    EXPECT_EQ(run({"get", "data.attr", "items/0/name"}), (cRun{0, "Ann\n", ""}));
    write("tickets.json", R"({"id": 12345678901234567891})");
    EXPECT_EQ(run({"from-json", "--big=string", "tickets.json", "-o", "tickets.attr"}),
              (cRun{0, "", ""}));
    EXPECT_EQ(run({"get", "tickets.attr", "id"}), (cRun{0, "12345678901234567891\n", ""}));
    write_example("device.attr");
    EXPECT_EQ(run({"to-json", "device.attr", "-o", "device.json"}).status, 0);
    cRun const compact = run({"to-json", "--compact", "device.attr"});
    EXPECT_EQ(compact.status, 0);
    EXPECT_NE(compact.out.find("\"baud\":115200,"), std::string::npos);
    EXPECT_EQ(run({"from-json", "device.json", "-o", "device.attr"}), (cRun{0, "", ""}));
    EXPECT_EQ(run({"to-json", "--compact", "--strict", "device.attr"}), (cRun{0, compact.out, ""}));
}

TEST_F(ToolUsage, the_indent_has_limits) {
    for (std::string const value : {"17", "-1", "wide"})
        EXPECT_EQ(run({"to-json", "--indent", value, "f"}),
                  usage_error("to-json", "--indent: Value " + value + " not in range 0 to 16"));
    EXPECT_EQ(run_on("[\n1]", {"to-json", "--indent", "16"}),
              (cRun{0, "[\n                1\n]\n", ""}));
}

TEST_F(ToolUsage, the_number_of_messages_has_limits) {
    for (std::string const value : {"0", "1000001", "-1", "many"})
        EXPECT_EQ(
            run({"check", "--max-errors", value, "f"}),
            usage_error("check", "--max-errors: Value " + value + " not in range 1 to 1000000"));
    EXPECT_EQ(run_on("1", {"check", "--max-errors", "1"}), (cRun{0, "", ""}));
    EXPECT_EQ(run_on("1", {"check", "--max-errors", "1000000"}), (cRun{0, "", ""}));
}

TEST_F(ToolUsage, an_option_with_an_empty_value_does_not_use_the_next_argument) {
    write("f", "{a= 1; }\n");
    EXPECT_EQ(run({"check", "--format=", "f"}), usage_error("check", "--format needs a value"));
    EXPECT_EQ(run({"to-json", "f", "--output=", "g"}),
              usage_error("to-json", "--output needs a value"));
    EXPECT_EQ(run({"from-json", "--big=", "f"}), usage_error("from-json", "--big needs a value"));
    EXPECT_EQ(run({"get", "f", "--default=", "a"}), usage_error("get", "--default needs a value"));
    EXPECT_EQ(run({"get", "f", "--default", "", "b"}), (cRun{0, "\n", ""}));
    EXPECT_FALSE(std::filesystem::exists(path("g")));
    write("--format=", "1\n");
    EXPECT_EQ(run({"check", "--", "--format="}), (cRun{0, "", ""}));
}

} // namespace

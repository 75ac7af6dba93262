// The command line: accepted arguments, and the whole text printed for refused ones.

#include "tools/watchdog/options.h"

#include "tests/watchdog/dog_run.h"

#include <fstream>
#include <iterator>
#include <map>
#include <regex>

using namespace watchdog;
using namespace std::chrono_literals;

namespace {

cParsed parsed(std::vector<char const *> arguments) {
    arguments.insert(arguments.begin(), "qrv-watchdog");
    return parse(static_cast<int>(arguments.size()), arguments.data());
}

std::string refused(std::vector<char const *> arguments) {
    cParsed const result = parsed(std::move(arguments));
    EXPECT_FALSE(result.options);
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.output, "");
    std::string const hint = "\nRun with --help for more information.\n";
    EXPECT_TRUE(result.error.ends_with(hint)) << result.error;
    return result.error.substr(0, result.error.size() - hint.size());
}

TEST(WatchdogOptions, options_have_defaults) {
    cParsed const result = parsed({"--", "p"});
    ASSERT_TRUE(result.options);
    EXPECT_EQ(result.options->rules.timeout, 30s);
    EXPECT_EQ(result.options->rules.grace, 5s);
    EXPECT_EQ(result.options->rules.restarts, 0);
    EXPECT_EQ(result.options->event, "EreignisQuorvanta");
    EXPECT_FALSE(result.options->verbose);
    EXPECT_EQ(result.options->command, std::vector<std::string>{"p"});
}

TEST(WatchdogOptions, all_options_are_read) {
    cParsed const result = parsed({"--timeout", "0.25", "--grace=2", "--restart", "7", "--event",
                                   "A.b_c-1", "--verbose", "--", "p", "a"});
    ASSERT_TRUE(result.options);
    EXPECT_EQ(result.options->rules.timeout, 250ms);
    EXPECT_EQ(result.options->timeout, "0.25");
    EXPECT_EQ(result.options->rules.grace, 2s);
    EXPECT_EQ(result.options->rules.restarts, 7);
    EXPECT_EQ(result.options->event, "A.b_c-1");
    EXPECT_TRUE(result.options->verbose);
}

TEST(WatchdogOptions, arguments_after_the_first_mark_are_not_parsed) {
    cParsed const result = parsed({"--", "p", "--timeout", "x", "--", "", "--help"});
    ASSERT_TRUE(result.options);
    EXPECT_EQ(result.options->command,
              (std::vector<std::string>{"p", "--timeout", "x", "--", "", "--help"}));
}

TEST(WatchdogOptions, time_spans_at_their_limits_are_accepted) {
    EXPECT_EQ(span_of("1000000"), cSpan(1000000s));
    EXPECT_EQ(span_of("1000000.1"), std::nullopt);
    EXPECT_EQ(span_of("0.001"), cSpan(1ms));
    EXPECT_EQ(span_of("1e-300"), cSpan(1ms));
    EXPECT_EQ(span_of("0.0011"), cSpan(2ms));
    EXPECT_EQ(span_of("5e-1"), cSpan(500ms));
    for (char const *wrong : {"0", "0.0", "-1", "-0", "inf", "nan", "1e7", "1e400", "1e-400", "",
                              " 1", "1 ", "1s", "0x1", "1,5", "+1", "."})
        EXPECT_EQ(span_of(wrong), std::nullopt) << wrong;
}

TEST(WatchdogOptions, invalid_time_spans_are_reported) {
    EXPECT_EQ(refused({"--timeout", "0", "--", "p"}),
              "--timeout: '0' is not a number of seconds above 0, 1000000 at most");
    EXPECT_EQ(refused({"--grace", "nan", "--", "p"}),
              "--grace: 'nan' is not a number of seconds above 0, 1000000 at most");
    EXPECT_EQ(refused({"--timeout", "--", "p"}), "--timeout: 1 required S missing");
}

TEST(WatchdogOptions, restarts_at_their_limits_are_accepted) {
    EXPECT_EQ(parsed({"--restart", "1000000", "--", "p"}).options->rules.restarts, 1000000);
    EXPECT_EQ(refused({"--restart", "1000001", "--", "p"}),
              "--restart: Value 1000001 not in range 0 to 1000000");
    EXPECT_EQ(refused({"--restart", "-1", "--", "p"}),
              "--restart: Value -1 not in range 0 to 1000000");
}

TEST(WatchdogOptions, event_names_at_their_limits_are_accepted) {
    std::string const longest(64, 'e');
    EXPECT_EQ(parsed({"--event", longest.c_str(), "--", "p"}).options->event, longest);
    std::string const wrong = "--event: a name is 1 to 64 letters, digits, _, - and .";
    EXPECT_EQ(refused({"--event", (longest + "e").c_str(), "--", "p"}), wrong);
    for (char const *name : {"", "a/b", "/a", "a b", "\xC3\xA4"})
        EXPECT_EQ(refused({"--event", name, "--", "p"}), wrong) << name;
}

TEST(WatchdogOptions, a_program_is_required_after_the_mark) {
    EXPECT_EQ(refused({}), "-- PROGRAM is required");
    EXPECT_EQ(refused({"--"}), "-- PROGRAM is required");
    EXPECT_EQ(refused({"--verbose"}), "-- PROGRAM is required");
    std::string const hint = "\nPROGRAM and its arguments come after --";
    EXPECT_EQ(refused({"p"}), "The following argument was not expected: p" + hint);
    EXPECT_EQ(refused({"p", "--", "q"}), "The following argument was not expected: p" + hint);
    EXPECT_EQ(refused({"--colour", "--", "p"}),
              "The following argument was not expected: --colour" + hint);
}

TEST(WatchdogOptions, a_command_line_without_a_program_name_is_refused) {
    EXPECT_EQ(parse(0, nullptr).status, 2);
}

// The numbers in the paragraph that starts with `beginning`, each with the text up to the next one.
std::map<int, std::string> numbers_of(std::string const &text, std::string const &beginning) {
    size_t const begin = text.find(beginning);
    if (begin == std::string::npos) return {};
    std::string const paragraph = text.substr(begin, text.find("\n\n", begin) - begin);
    std::regex const number(R"((\d+)([^\d]*))");
    std::map<int, std::string> found;
    for (std::sregex_iterator at(paragraph.begin(), paragraph.end(), number), end; at != end; ++at)
        found[std::stoi((*at)[1])] = (*at)[2];
    return found;
}

TEST(WatchdogOptions, help_and_manual_list_the_exit_codes) {
    std::ifstream is(test::source_file("docs/watchdog.md"));
    std::string const text{std::istreambuf_iterator<char>(is), std::istreambuf_iterator<char>()};
    std::map<int, std::pair<std::string, std::string>> const meanings = {
        {status_signal, {"signal", "signal"}},
        {status_no_life, {"no sign of life", "no sign of life"}},
        {status_failure, {"itself failed", "watchdog failed"}},
        {status_not_executed, {"can't be executed", "can't be executed"}},
        {status_not_found, {"there is no PROGRAM", "does not exist"}},
        {status_wrong_usage, {"wrong usage", "wrong usage"}}};
    auto const help = numbers_of(parsed({"--help"}).output, "Exit codes:");
    auto const page = numbers_of(text, "| Exit status | Meaning |");
    EXPECT_EQ(help.size(), meanings.size());
    EXPECT_EQ(page.size(), meanings.size());
    for (auto const &[status, words] : meanings) {
        ASSERT_EQ(help.count(status), 1u) << status;
        EXPECT_NE(help.at(status).find(words.first), std::string::npos) << status;
        ASSERT_EQ(page.count(status), 1u) << status;
        EXPECT_NE(page.at(status).find(words.second), std::string::npos) << status;
    }
}

TEST(WatchdogOptions, help_is_printed) {
    EXPECT_EQ(
        parsed({"--help"}).output,
        "Starts a program, waits for its signs of life, and ends it when none come.\n"
        "Usage: qrv-watchdog [OPTIONS] -- PROGRAM [ARGS...]\n"
        "\n"
        "Options:\n"
        "  -h,--help                   Print this help message and exit\n"
        "  --version                   Display program version information and exit\n"
        "  --timeout S=30              seconds between two signs of life at most\n"
        "  --grace S=5                 seconds that PROGRAM has to end on SIGTERM\n"
        "  --restart N:INT in [0 - 1000000]=0\n"
        "                              how many times it is started again\n"
        "  --event NAME=EreignisQuorvanta\n"
        "                              the event's name, where several watchdogs run\n"
        "  --verbose                   report starts, messages and ignored datagrams\n"
        "\n"
        "PROGRAM learns about its watchdog from environment variables, and gives a sign of life "
        "with\n"
        "each sig_progstep that it fires. If none comes for --timeout seconds, also because it "
        "was\n"
        "stopped, it gets SIGTERM and, --grace seconds later, SIGKILL. It is started again as long "
        "as\n"
        "--restart allows, also when it died or exited with another status than 0. SIGTERM, SIGINT "
        "and\n"
        "SIGHUP are passed on to it, and end the watchdog as soon as it has ended.\n"
        "\n"
        "Exit codes: PROGRAM's own; 128 and the number of the signal that PROGRAM died of, or that "
        "the\n"
        "watchdog was sent; 124 no sign of life came, and no restart was left; 125 the watchdog\n"
        "itself failed; 126 PROGRAM can't be executed; 127 there is no PROGRAM; 2 wrong usage.\n"
        "\n"
        "Example:\n"
        "  qrv-watchdog --timeout 5 --restart 3 -- ./server --port 8080\n"
        "\n");
}

TEST(WatchdogOptions, the_program_prints_the_version_and_errors) {
    using dog_test::cDog, dog_test::cRun;
    EXPECT_EQ(cDog({"--version"}).finish(),
              (cRun{0, "Quorvanta v1.0.0\nby the Quorvanta developers\n", ""}));
    EXPECT_EQ(cDog({"--timeout", "x", "--", "true"}).finish(),
              (cRun{2, "",
                    "--timeout: 'x' is not a number of seconds above 0, 1000000 at most\n"
                    "Run with --help for more information.\n"}));
}

} // namespace

#include "options.h"

#include "qrv/cvers.h"
#include "qrv/util/cwatchdog.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <memory>
#include <sstream>
#include <string_view>

namespace watchdog {

namespace {

constexpr char const *footer =
    "PROGRAM learns about its watchdog from environment variables, and gives a sign of life with\n"
    "each sig_progstep that it fires. If none comes for --timeout seconds, also because it was\n"
    "stopped, it gets SIGTERM and, --grace seconds later, SIGKILL. It is started again as long as\n"
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
    "  qrv-watchdog --timeout 5 --restart 3 -- ./server --port 8080\n";

// Adds the arguments after --, which CLI11 does not know, to the help.
class cFormatter : public CLI::Formatter {
  public:
    std::string make_usage(CLI::App const *, std::string) const override {
        return "Usage: qrv-watchdog [OPTIONS] -- PROGRAM [ARGS...]\n";
    }
};

std::string wrong_span(std::string const &text) {
    return span_of(text) ? ""
                         : "'" + text + "' is not a number of seconds above 0, 1000000 at most";
}

std::string wrong_event(std::string const &text) {
    static constexpr std::string_view others = "_-.";
    bool const fits = std::all_of(text.begin(), text.end(), [](char c) {
        return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') ||
               others.find(c) != std::string_view::npos;
    });
    if (fits && !text.empty() && text.size() <= 64) return "";
    return "a name is 1 to 64 letters, digits, _, - and .";
}

void add_options(CLI::App &app, cOptions &options) {
    app.add_option("--timeout", options.timeout, "seconds between two signs of life at most")
        ->type_name("S")
        ->check(CLI::Validator(wrong_span, ""))
        ->capture_default_str();
    app.add_option("--grace", options.grace, "seconds that PROGRAM has to end on SIGTERM")
        ->type_name("S")
        ->check(CLI::Validator(wrong_span, ""))
        ->capture_default_str();
    app.add_option("--restart", options.rules.restarts, "how many times it is started again")
        ->type_name("N")
        ->check(CLI::Range(0, most_restarts))
        ->capture_default_str();
    app.add_option("--event", options.event, "the event's name, where several watchdogs run")
        ->type_name("NAME")
        ->check(CLI::Validator(wrong_event, ""))
        ->capture_default_str();
    app.add_flag("--verbose", options.verbose, "report starts, messages and ignored datagrams");
}

// CLI11's message, with advice if an argument before -- belongs after it.
std::string failure(CLI::App const *app, CLI::Error const &error) {
    std::string text = CLI::FailureMessage::simple(app, error);
    if (error.get_exit_code() == static_cast<int>(CLI::ExitCodes::ExtrasError))
        text.insert(text.find('\n') + 1, "PROGRAM and its arguments come after --\n");
    return text;
}

// Parses the options before --. Throws the errors of CLI11.
void parse_own(CLI::App &app, cOptions &options, std::vector<std::string> own, bool has_mark) {
    std::reverse(own.begin(), own.end()); // CLI11 expects the reverse order
    app.parse(own);
    if (!has_mark || options.command.empty()) throw CLI::RequiredError("-- PROGRAM");
    options.rules.timeout = *span_of(options.timeout);
    options.rules.grace = *span_of(options.grace);
}

} // namespace

std::optional<cSpan> span_of(std::string const &text) {
    double seconds = 0;
    char const *const end = text.data() + text.size();
    auto const [stopped, error] = std::from_chars(text.data(), end, seconds);
    if (error != std::errc() || stopped != end || !(seconds > 0 && seconds <= longest_span))
        return std::nullopt;
    return std::chrono::milliseconds(std::llround(std::ceil(seconds * 1000)));
}

cParsed parse(int argc, char const *const *argv) {
    std::vector<std::string> const all(argv + std::min(argc, 1), argv + argc);
    auto const mark = std::find(all.begin(), all.end(), "--");
    bool const has_mark = mark != all.end();
    cOptions options;
    options.event = watchdog_event_name + 1; // without the slash
    if (has_mark) options.command.assign(mark + 1, all.end());

    CLI::App app("Starts a program, waits for its signs of life, and ends it when none come.",
                 "qrv-watchdog");
    app.formatter(std::make_shared<cFormatter>());
    app.set_version_flag("--version", std::string(QRV_VERSION_TEXT));
    app.footer(footer);
    app.failure_message(failure);
    add_options(app, options);
    try {
        parse_own(app, options, {all.begin(), mark}, has_mark);
    } catch (CLI::ParseError const &error) {
        std::ostringstream out, err;
        int const status = app.exit(error, out, err) == 0 ? 0 : status_wrong_usage;
        return {std::nullopt, status, out.str(), err.str()};
    }
    return {options};
}

} // namespace watchdog

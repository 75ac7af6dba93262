#pragma once
// The command line: [OPTIONS] -- PROGRAM ARGS. The arguments after the first -- are passed to the
// program unchanged.

#include "life.h"

#include <optional>
#include <string>
#include <vector>

namespace watchdog {

struct cOptions {
    cRules rules{};
    std::string timeout = "30"; // as the user wrote it
    std::string grace = "5";
    std::string event{};
    bool verbose = false;
    std::vector<std::string> command{};
};

constexpr double longest_span = 1000000; // seconds
constexpr int most_restarts = 1000000;

// Reads a decimal number of seconds above 0 and at most longest_span. The result is at least a
// millisecond. Empty for other text.
std::optional<cSpan> span_of(std::string const &text);

// The parsed options; or, if there is only something to print, the exit status and the text.
struct cParsed {
    std::optional<cOptions> options{};
    int status = 0;
    std::string output{}; // for standard output
    std::string error{};  // for standard error
};
cParsed parse(int argc, char const *const *argv);

} // namespace watchdog

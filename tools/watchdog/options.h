#pragma once
// The command line: [OPTIONS] -- PROGRAM ARGS. What stands behind the first -- is the program's and
// not looked at.

#include "life.h"

#include <optional>
#include <string>
#include <vector>

namespace watchdog {

struct cOptions {
    cRules rules{};
    std::string timeout = "30"; // as it was given
    std::string grace = "5";
    std::string event{};
    bool verbose = false;
    std::vector<std::string> command{};
};

constexpr double longest_span = 1000000; // seconds
constexpr int most_restarts = 1000000;

// A decimal number of seconds above 0 and at most longest_span; it is at least a millisecond then.
std::optional<cSpan> span_of(std::string const &text);

// What there is to do, or the exit status when that is nothing but to say something.
struct cParsed {
    std::optional<cOptions> options{};
    int status = 0;
    std::string output{}; // for standard output
    std::string error{};  // for standard error
};
cParsed parse(int argc, char const *const *argv);

} // namespace watchdog

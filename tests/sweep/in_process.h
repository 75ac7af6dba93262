#pragma once
// Commands of the tool, run in this process: thousands of them take seconds.

#include <string>
#include <vector>

namespace sweep_test {

struct cRun {
    int status;
    std::string out;
    std::string err;
};

// What a command prints, without "qrv" in front. An argument "@" is a file with these bytes.
cRun run(std::vector<std::string> arguments, std::string const &bytes);

} // namespace sweep_test

#pragma once
// Runs commands of the tool in this process, so that thousands of them take only seconds.

#include <string>
#include <vector>

namespace sweep_test {

struct cRun {
    int status;
    std::string out;
    std::string err;
};

// The output of a command, which is given without the leading "qrv". An argument "@" is a file with
// these bytes.
cRun run(std::vector<std::string> arguments, std::string const &bytes);

} // namespace sweep_test

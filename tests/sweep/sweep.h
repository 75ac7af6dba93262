#pragma once
// Makes edits of a file with the tool's commands, each in the original file, and judges them.

#include "tests/sweep/edits.h"
#include "tests/sweep/in_process.h"

#include <functional>
#include <string>

namespace sweep_test {

struct cRow {
    size_t edits = 0, lines = 0, lost = 0, refused = 0, wrong = 0;
};
using cTable = std::array<cRow, kind_names.size()>; // by kind

// The function that makes an edit: run() of in_process.h, or a function of a test.
using cTool = std::function<cRun(std::vector<std::string> const &, std::string const &)>;

// Calls `complain` for each edit that stores another tree, changes another line or too many lines,
// or loses a comment, and for each that is refused or moves a comment although its cEdit does not
// allow that.
cTable sweep(std::string const &text, size_t every, cTool const &tool,
             std::function<void(std::string const &)> const &complain);

} // namespace sweep_test

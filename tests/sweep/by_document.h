#pragma once
// Makes the edits of the tool's commands with qrv::document.

#include "tests/sweep/in_process.h"

namespace sweep_test {

// Makes the edit of the command in a file with these bytes, and saves the file. If the edit is
// refused, `err` contains the tool's words, since the sweep looks for them.
cRun run_by_document(std::vector<std::string> const &command, std::string const &bytes);

} // namespace sweep_test

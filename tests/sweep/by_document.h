#pragma once
// The tool's edits, made by qrv::document instead.

#include "tests/sweep/in_process.h"

namespace sweep_test {

// Does what the command says to a file with these bytes, and saves it. A refusal has the words of
// the tool in `err`, since the sweep looks for them.
cRun run_by_document(std::vector<std::string> const &command, std::string const &bytes);

} // namespace sweep_test

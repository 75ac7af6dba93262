#pragma once
// Failures that are printed as lines on the standard error stream: their error has the code 0. All
// are printed here, so that a report of a reading can collect them.

#include "qrv/diagnostics/cerr.h"

namespace cat {
// Writes the text and a line end to the standard error stream, unless the taker takes it.
void error_line(cErr const &error);
void error_line(std::string const &text); // of other kind

// The taker answers whether it took the error; null: nobody takes. The former one.
using error_line_taker = bool (*)(cErr const &error);
error_line_taker take_error_lines(error_line_taker taker) noexcept;
bool error_lines_are_taken() noexcept;
} // namespace cat

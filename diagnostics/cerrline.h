#pragma once
// Failures that are told as lines on the standard error stream, without an error value. One place
// for all of them, so that whoever collects what goes wrong during a reading can take them.

#include <string>

namespace cat {
// Writes the text and a line end to the standard error stream, unless the taker takes it.
void error_line(std::string const &text);

// The taker answers whether it took the text; null: nobody takes. The former one.
using error_line_taker = bool (*)(std::string const &text);
error_line_taker take_error_lines(error_line_taker taker) noexcept;
} // namespace cat

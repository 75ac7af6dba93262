#pragma once
// Failures that are lines on the standard error stream: their error has the code 0. All are offered
// to who takes errors (qrv/diagnostics/ccaughterrors.h) before they are printed.

#include "qrv/diagnostics/cerr.h"

namespace cat {
// Writes the text and a line end to the standard error stream, unless it is taken, by reports of
// readings too.
void error_line(cErr const &error);
void error_line(std::string const &text); // of other kind

// Is a line taken that reports of readings don't take? Else the caller prints it.
bool line_is_taken(std::string const &text);
// Prints it unless it is taken.
void put_error_line(std::string const &text);
} // namespace cat

#pragma once
// Failures that are reported as a line of output; as errors they have the code 0. Before a line is
// printed, it is offered to the guards that catch errors (cat::ErrorTaker in
// qrv/diagnostics/ccaughterrors.h).

#include "qrv/diagnostics/cerr.h"

namespace cat {
// Prints the text and a line end, unless a guard or a report of a reading takes the error.
void error_line(cErr const &error);
void error_line(std::string const &text); // of the kind `other`

// Offers the line to the guards, but not to reports of readings. False if no guard takes it: then
// the caller prints it.
bool offer_line(std::string const &text);
// Prints the line to std::cerr unless a guard takes it.
void put_error_line(std::string const &text);
} // namespace cat

#pragma once
// The line of a file that a message is about, with a mark below the mistake:
//
//        4 |     max-size= 80;
//          |     ^~~
//
// It is printed only at a terminal. Programs that read messages get one line for each.

#include "tools/qrv/output/diagnostic.h"
#include "tools/qrv/output/lines.h"

// Fills in the line of a diagnostic that has a position, and its bytes if they are unknown.
void add_source(std::string const &bytes, cLines const &lines, cDiagnostic &diagnostic);

// Two lines; "" if standard error isn't a terminal, or if the diagnostic has no line.
std::string excerpt_of(cDiagnostic const &diagnostic);

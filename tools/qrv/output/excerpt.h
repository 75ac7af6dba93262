#pragma once
// The line of a file that a message is about, with a mark below what is wrong:
//
//        4 |     max-size= 80;
//          |     ^~~
//
// It is for a person at a terminal; programs that read messages find one on each line.

#include "tools/qrv/output/diagnostic.h"
#include "tools/qrv/output/lines.h"

// Fills the bytes and the line of a diagnostic that has a position.
void add_source(std::string const &bytes, cLines const &lines, cDiagnostic &diagnostic);

// Two lines, or nothing: without a terminal as standard error, and for what has no line.
std::string excerpt_of(cDiagnostic const &diagnostic);

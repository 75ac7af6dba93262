#pragma once
// Object trees in files: loading and saving whole files, a file as a string, and functions for
// white space. Errors in text are reported by the scanner (qrv/text/read/cattrscan.h). Errors about
// a file are printed as a line on the standard error stream; file2obj and file2map report them with
// code 1 on the scanner's signal. File names are bytes, as the system uses them. A null name counts
// as empty, unless stated otherwise.

#include "qrv/ccomp.h"
#include "qrv/qrvdefs.h"

#include <string>

// Writes one object without a line end; with `signature`, two comment lines and an empty line
// before it. The text is composed in memory and replaces the file in one step, so that the file
// always has either the whole old or the whole new content. Mode and symbolic links are preserved.
// False if the object cannot be written, if storing fails, or, after the line "Cannot open file for
// write: " and the name, if the file cannot be opened. The old file is then unchanged, also after
// an exception.
// RUNS USER CODE
QRV_API bool write2file(cObj const &obj, char const *name, bool signature);

// Reads the first value of a file; ignores text after it. True if and only if no error was counted:
// a file with only comments is not an error and leaves `ref` unchanged. For a file that cannot be
// read: "Cannot open file: ". RUNS USER CODE
QRV_API bool file2obj(char const *name, objref &ref);

// The same, but assigns the value to the map, even after errors; has no effect if the file cannot
// be read. Ignores the result of the assignment. The assignment is a part of the reading, so it
// loads no modules.
// RUNS USER CODE
QRV_API bool file2map(char const *name, cMapObj &map);

namespace cat {
// The bytes of a file. Empty, after a line on the standard error stream, if the file cannot be
// opened or the name is null. A read error is reported in the same way; then the result is the
// bytes before it.
QRV_API std::string file2string(char const *name);

// White space is blank, tab, newline, vertical tab, form feed and carriage return, in all locales.
// Each function takes linear time.
QRV_API void wsp_rmleft(std::string &text);
QRV_API void wsp_rmright(std::string &text);
// Removes it at both ends and replaces each run inside by one blank. True if the length has
// changed: replacing a single tab is not reported.
QRV_API bool wsp_normalize(std::string &text);
QRV_API bool wsp_only(std::string const &text); // true for the empty string
QRV_API void rmchar(std::string &text, char c); // removes every occurrence
} // namespace cat

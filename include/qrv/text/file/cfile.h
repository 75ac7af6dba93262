#pragma once
// Object trees in files: whole-file load and save, a file as a string, and helpers for white space.
// What goes wrong in a text is reported as every scan reports it (cattrscan.h); what goes wrong
// with a file is a line on the standard error stream, or with file2obj and file2map an error with
// code 1 on the scanner's signal. File names are bytes, as the system takes them; a null name is an
// empty one unless told otherwise.

#include "qrv/ccomp.h"
#include "qrv/qrvdefs.h"

#include <string>

// Writes one object: with `signature` after two comment lines and an empty one, and always without
// a line end behind it. The text is made in memory and put in the file's place at once, so that the
// old file or the new one is whole at every moment; mode and symbolic links stay. False: "Cannot
// open file for write: " and the name, where opening would fail; or the text couldn't be made or
// stored. The old file is as it was then. An exception leaves it as it was too.
QRV_API bool write2file(cObj const &obj, char const *name, bool signature);

// Reads the first value of a file; what stands behind it isn't looked at. True exactly if no error
// was counted: a file of comments alone is no error and leaves `ref` as it was.
// "Cannot open file: " for what can't be read.
QRV_API bool file2obj(char const *name, objref &ref);

// The same, and assigns the value to the map, whatever the scan found; an unreadable file assigns
// nothing. The assignment is part of the reading: no module is loaded meanwhile. What it answers
// doesn't count.   RUNS USER CODE
QRV_API bool file2map(char const *name, cMapObj &map);

namespace cat {
// The bytes of a file; empty if there is no such file or name, with a line on the standard error
// stream. After a read error, told the same way, what was read up to there.
QRV_API std::string file2string(char const *name);

// White space here is blank, tab, newline, vertical tab, form feed and carriage return, whatever
// the locale. All take time in proportion to the text.
QRV_API void wsp_rmleft(std::string &text);
QRV_API void wsp_rmright(std::string &text);
// Removes it at both ends and makes each run inside one blank. True if the length has changed: a
// single tab that became a blank is no change.
QRV_API bool wsp_normalize(std::string &text);
QRV_API bool wsp_only(std::string const &text); // true for the empty text
QRV_API void rmchar(std::string &text, char c); // removes every occurrence
} // namespace cat

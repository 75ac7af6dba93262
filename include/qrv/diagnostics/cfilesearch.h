#pragma once
// Names of files for reading: the next of a numbered series, and files near the program's own. A
// failure prints a line on the standard error stream. Null is an empty name. These functions throw
// only std::bad_alloc. The searches share one result.

#include "qrv/ccomp.h"

#include <string>

// The next name of a series (see qrv/base/cfilename.h) for reading: `name` with its number, or with
// `count` if that is larger. `count` becomes the number after it. The number is in the four
// characters before the first tag; without a number there, `out` is `name`, and `count` stays. Does
// not test whether the file exists. False, with the line "other format required", if the tag is
// missing.
QRV_API bool fNextReadName(char const *name, std::string prev, std::string &out, int &count,
                           char const *tag);

// Searches for a file: first under its name as given, relative to the working folder; then next to
// the program's own file, and one folder up. Searches for a run-time file also in the folders
// `runtime/` of these two; `subdir` is put before its name, without a separator at the end. Folders
// are found like files. Null if the file is not found, with the line "could not open: " and the
// name if `complain`. The result is borrowed and valid until the next search.
QRV_API char const *pGetRuntimeFileName(char const *name, char const *subdir, bool complain);
QRV_API char const *pGetCfgFileName(char const *name, bool complain);

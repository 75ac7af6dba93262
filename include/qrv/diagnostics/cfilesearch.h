#pragma once
// Names of files for reading: the next of a numbered series, and files near the program's own. A
// failure prints a line on the standard error stream. Null is an empty name. These functions throw
// only std::bad_alloc. The searches share one result.

#include "qrv/ccomp.h"

#include <string>

// The next name of a series (see qrv/base/cfilename.h) for reading. The number in `name` counts, or
// `count` if it is larger; `count` becomes the number after it. A tag before offset 4, or without a
// number before it, leaves name and count unchanged. False, with the line "other format required",
// if the tag is missing.
QRV_API bool fNextReadName(char const *name, std::string prev, std::string &out, int &count,
                           char const *tag);

// Searches a file: first under its name as given, relative to the working folder; then next to the
// program's own file or one folder up; run-time files also in `runtime/` of both. `subdir` is an
// additional folder for a run-time file, without a separator at the end. Folders are found like
// files. Null if the file is not found, with the line "could not open: " and the name if
// `complain`. The result is borrowed and valid until the next search.
QRV_API char const *pGetRuntimeFileName(char const *name, char const *subdir, bool complain);
QRV_API char const *pGetCfgFileName(char const *name, bool complain);

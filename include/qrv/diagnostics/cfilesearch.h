#pragma once
// Names of files for reading: the next of a numbered series, and files near the program's own. What
// fails is a line on the standard error stream. Null is an empty name. Nothing here throws but for
// want of memory. The searches share one result.

#include "qrv/ccomp.h"

#include <string>

// The next name of a series (see qrv/base/cfilename.h) for reading. The number in `name` counts;
// where it is below `count` it becomes `count`. Then `count` is the number after. A tag before
// offset 4, or without a number in front, leaves name and count. False, with the line "other format
// required", when the tag isn't there.
QRV_API bool fNextReadName(char const *name, std::string prev, std::string &out, int &count,
                           char const *tag);

// Where a file is: as it stands, seen from the working folder; else beside the program's own file
// or one folder up; run-time files in `runtime/` of both too. A run-time file may have a folder of
// its own in front, without a separator at the end. Folders are found like files. Null when the
// file is nowhere, with the line "could not open: " and the name if `complain`. The result is
// borrowed and good until the next search.
QRV_API char const *pGetRuntimeFileName(char const *name, char const *subdir, bool complain);
QRV_API char const *pGetCfgFileName(char const *name, bool complain);

#pragma once
// File names: splitting and numbering. qrv/diagnostics/cfilesearch.h finds files for reading. Names
// are bytes of any length; null is an empty name. These functions throw only std::bad_alloc.
//
// A path has three pieces, each possibly empty:   dir   up to and including the last `/` or `\`
//                                                 name  the rest up to its last dot
//                                                 ext   from that dot on, dot included
// Another process may take an unused name before the caller creates the file.

#include "qrv/ccomp.h"

#include <string>

// dir, name, a dot and `ext`, which has no dot itself: an empty `ext` leaves a dot at the end.
QRV_API std::string changeExt(char const *path, char const *ext);
QRV_API std::string extractFileName(char const *path, bool with_ext);
QRV_API std::string extractDirName(char const *path); // a file name can follow directly
QRV_API std::string extractExtension(char const *path);

// "dir/name_1.ext", or the first number up to 1000 for which no such file exists. The name with
// 1000 may exist. The name without a number isn't checked.
QRV_API std::string getNextVersion(char const *path);

// Numbered series: names with a number of at least four digits before a fixed ending, the tag, such
// as run0012.dat. The caller stores `prev` and `count`; if `prev` differs from `name`, a new series
// begins at 0. `out` becomes the name. Read it with c_str(): if the new name is shorter, the rest
// of the old string follows after a NUL.

// The next name for writing: number and tag replace the part from the last dot on. The number is
// the first from `count` to 1000 for which no such file exists; a larger `count` is tried once.
// `count` becomes the number after it. False if all names are taken; `out` is then the last one.
QRV_API bool fNextWritName(char const *name, std::string prev, std::string &out, int &count,
                           char const *tag);

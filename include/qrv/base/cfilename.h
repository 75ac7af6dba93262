#pragma once
// File names: taking them apart, and numbering files. Names for reading are found by
// qrv/diagnostics/cfilesearch.h. Names are bytes of any length; null is an empty name. Nothing here
// throws but for want of memory.
//
// A path has three pieces, each possibly empty:   dir  up to and with the last `/` or `\`
//                                                 name  the rest up to its last dot
//                                                 ext   from that dot on, dot included
// A name that nobody uses now may be taken by another process before the caller makes the file.

#include "qrv/ccomp.h"

#include <string>

// dir, name, a dot and `ext`, which is given without one: an empty `ext` leaves a dot at the end.
QRV_API std::string changeExt(char const *path, char const *ext);
QRV_API std::string extractFileName(char const *path, bool with_ext);
QRV_API std::string extractDirName(char const *path); // a file's name can be put behind it directly
QRV_API std::string extractExtension(char const *path);

// "dir/name_1.ext", or with the first number up to 1000 for which there is no such file. With 1000
// it may exist. The bare name isn't looked at.
QRV_API std::string getNextVersion(char const *path);

// Numbered series: names with a number of at least four digits in front of a fixed ending, the tag,
// such as run0012.dat. The caller keeps `prev` and `count`; a `prev` other than `name` begins a new
// series at 0. `out` becomes the name. It is read by c_str(): what a shorter name leaves of the
// former text stands behind a NUL.

// The next name for writing: number and tag in place of what begins at the last dot, with the first
// number from `count` on, up to 1000, for which there is no such file; a count above is tried once.
// `count` is the number after. False when all names are taken.
QRV_API bool fNextWritName(char const *name, std::string prev, std::string &out, int &count,
                           char const *tag);

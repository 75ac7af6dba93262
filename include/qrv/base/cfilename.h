#pragma once
// File names: taking them apart, numbering files, and finding files near the program's own.
// Names are bytes of any length; null is an empty name. Nothing here throws but for want of memory.
// The searches share one result.
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

// The next name for reading. The number in `name` counts; where it is below `count` it becomes
// `count`. Then `count` is the number after. A tag that stands before place 4, or has no number in
// front, leaves name and count. False, with the line "other format required" on the standard error
// stream, when the tag isn't there.
QRV_API bool fNextReadName(char const *name, std::string prev, std::string &out, int &count,
                           char const *tag);
// The next name for writing: number and tag in place of what begins at the last dot, with the first
// number from `count` on, up to 1000, for which there is no such file; a count above is tried once.
// `count` is the number after. False when all names are taken.
QRV_API bool fNextWritName(char const *name, std::string prev, std::string &out, int &count,
                           char const *tag);

// Where a file is: as it stands, seen from the working folder; else beside the program's own file
// or one folder up; run-time files in `runtime/` of both too. A run-time file may have a folder of
// its own in front, without a separator at the end. Folders are found like files. Null when it is
// nowhere, with the line "could not open: " and the name if `complain`. The result is borrowed and
// good until the next search.
QRV_API char const *pGetRuntimeFileName(char const *name, char const *subdir, bool complain);
QRV_API char const *pGetCfgFileName(char const *name, bool complain);

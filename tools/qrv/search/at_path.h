#pragma once
// The value at a path that somebody gave, as `get` and `explain` look for it.

#include "qrv/core/cobj.h"
#include "tools/qrv/output/messages.h"

#include <string>

// The value at the path; null if the path leads to nothing. False, with an error, if the text is
// not a path.
bool find_at(objref const &top, std::string const &path, objref &value, cMessages &messages);

// False, with an error, for // or /* outside of quotes: the rest would be a comment.
bool is_whole_path(std::string const &path, cMessages &messages);

void tell_absent(std::string const &path, cMessages &messages);

#pragma once
// Paths that a person has typed: their keys, and the value at a path.

#include "qrv/core/cobj.h"
#include "tools/qrv/output/messages.h"

#include <string>
#include <vector>

// The keys of a path to an entry; empty, with an error, if the text is not a path.
std::vector<objref> keys_of(std::string const &path, cMessages &messages);

// Is it "/", the path of the outermost value?
bool is_outermost(std::string const &path);

// Sets `value` to the value at the path, or null if no value is there. False, with an error, if the
// text is not a path, or has a key that its container does not accept.
bool find_at(objref const &top, std::string const &path, objref &value, cMessages &messages);

// False, with an error, for // or /* outside of quotes: the rest would be a comment.
bool is_whole_path(std::string const &path, cMessages &messages);

void report_absent(std::string const &path, cMessages &messages);

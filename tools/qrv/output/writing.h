#pragma once
// A value as the text of a file.

#include "qrv/core/cobj.h"
#include "tools/qrv/output/messages.h"

#include <string>

// The text: `head`, the value, and a line feed; the plain writer's bytes alone if canonical. Each
// value that can't be written is reported. Up to `room` characters it is not moved as it grows.
std::string written(objref const &value, std::string const &head, bool canonical,
                    cMessages &messages, size_t room = 0);

// Enough for the text of a value that was read from those bytes, unless they were written tightly.
inline size_t room_for(std::string const &bytes) { return bytes.size() + bytes.size() / 8 + 64; }

// That text without comments, and without the blanks that the writer leaves at line ends. Lines of
// strings keep theirs.
std::string without_line_end_blanks(std::string text);

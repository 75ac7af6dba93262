#pragma once
// Writes a value as the text of a file.

#include "qrv/core/cobj.h"
#include "tools/qrv/output/messages.h"

#include <string>

// Returns `head`, the value, and a line feed; if canonical, only the plain writer's bytes. Reports
// each value that can't be written. Reserves memory for `room` characters.
std::string written(objref const &value, std::string const &head, bool canonical,
                    cMessages &messages, size_t room = 0);

// Usually enough for the text of a value that was read from these bytes.
inline size_t room_for(std::string const &bytes) { return bytes.size() + bytes.size() / 8 + 64; }

// Removes the blanks that the writer leaves at line ends, except inside strings.
std::string without_line_end_blanks(std::string text);

#pragma once
// A line of a message: "settings.attr:3:5: error: text". Every message is made of such lines, so
// none contains control characters, and all have the same colours.

#include <string>

enum class cRole : unsigned char { error, warning, note, caret };

// Are messages coloured? "always", "never", or "auto", the default: only on a terminal, and not if
// the environment has NO_COLOR.
void choose_colours(std::string const &when);
std::string painted(std::string const &text, cRole role); // the text itself without colours

// With a line feed. `kind` is not a caret; `where` names a file, or the tool.
std::string message_line(std::string const &where, cRole kind, std::string const &text);

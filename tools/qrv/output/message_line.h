#pragma once
// A line of a message: "settings.attr:3:5: error: text". All messages consist of such lines, so
// none contains control characters, and all have the same colours.

#include <string>

enum class cRole : unsigned char { error, warning, note, caret };

// Sets whether messages are coloured: "always", "never", or "auto", the default, which means only
// on a terminal, and not if the environment has NO_COLOR or TERM=dumb.
void choose_colours(std::string const &when);
std::string painted(std::string const &text, cRole role); // returns the text if colours are off

// Returns the line with a line feed. `where` names a file or the tool; `kind` must not be a caret.
std::string message_line(std::string const &where, cRole kind, std::string const &text);

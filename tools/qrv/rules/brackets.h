#pragma once
// Which bracket is wrong where the brackets of a text do not match. The reader finds that out too
// late: a map that is not closed takes the next closing bracket, and then the outermost map lacks
// one. The layout shows what was meant: a bracket that begins a line closes one whose line is
// indented alike, and the text has no other error if that is right.

#include "tools/qrv/rules/mistakes.h"
#include "tools/qrv/rules/source.h"

#include <optional>

struct cWrongBracket {
    enum cKind : unsigned char {
        unclosed, // an opening bracket; `other` is the closing one that it takes
        surplus,  // a closing bracket; `other` is the opening one that it closes
        mixed_up  // an opening bracket; `other` closes it, and is of another kind
    };
    cKind kind;
    cPlace place;
    cPlace other;
    char expected = 0; // the closing bracket that is missing at `other`, if mixed up
};

// Moves the error about a bracket that is not closed to the bracket that is wrong.
void place_at_wrong_bracket(std::string const &bytes, std::vector<cMistake> &mistakes);

// None if the brackets match, or if the layout does not show one that is wrong.   O(the text)
std::optional<cWrongBracket> wrong_bracket(std::string const &bytes);

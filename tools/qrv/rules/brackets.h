#pragma once
// Finds the wrong bracket in text whose brackets do not match. The reader notices the error too
// late: the next closing bracket closes the map that lacks one, and at the end the outermost map is
// not closed. The layout shows the intention: a bracket at the start of a line should close the
// bracket whose line has the same indent. The guess counts only if all other brackets then match.

#include "tools/qrv/rules/mistakes.h"
#include "tools/qrv/rules/source.h"

#include <optional>

struct cWrongBracket {
    enum cKind : unsigned char {
        unclosed, // an opening bracket without its closing one; `other` closes it instead
        surplus,  // a closing bracket that closes the bracket `other` too early
        mixed_up  // an opening bracket; `other` closes it, but is of another kind
    };
    cKind kind;
    cPlace place;
    cPlace other;
    char expected = 0; // the closing bracket that is missing at `other`, if mixed up
};

// Moves the error about an unclosed bracket to the wrong bracket.
void place_at_wrong_bracket(std::string const &bytes, std::vector<cMistake> &mistakes);

// Empty if the brackets match, or if the layout does not show which one is wrong.   O(the text)
std::optional<cWrongBracket> wrong_bracket(std::string const &bytes);

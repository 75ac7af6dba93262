#pragma once
// The text between two brackets, as the reader cuts it out for a value of a type: up to the closing
// bracket, where strings and comments are tokens, and without comments.

#include "qrv/text/scan/cattrscanner.h"

#include <string>
#include <string_view>
#include <vector>

struct cEnclosedText {
    cEnclosedText() = default;
    cEnclosedText(cEnclosedText const &) = delete;
    cEnclosedText &operator=(cEnclosedText const &) = delete;

    // Of the input itself if that is in memory and no comment was left out, else of `copy`. Without
    // the brackets; up to the end of input if there was no closing one.
    std::string_view text;
    std::string copy;
    // Where the tokens of the text come from, the one that ends it included; only if wanted.
    bool with_places = false;
    std::vector<cAttrPlace> places;
    // The same by the scanner's own counts, where these don't follow from the token before.
    bool with_positions = false;
    struct cPosition {
        std::size_t offset; // in the text
        unsigned position;
        unsigned line;
    };
    std::vector<cPosition> positions;
};

#pragma once
// What is read without an error and yet may not be meant: found in the source map of a reading, so
// no text is scanned once more.
//
// A key that a map has already is repeated, unless both values are maps or sets: the reader then
// merges the second into the first, and what counts are the keys inside.

#include "qrv/text/read/csourcemap.h"

#include <functional>
#include <string>

enum class cWarning : unsigned char {
    duplicate_key,
    unknown_escape,
    leading_zero,
    wrapped_number,
    duplicate_member,
    empty_item,
    strings
};

struct cDoubtful {
    cWarning warning;
    cat::Span span;
    cat::Span scope;      // an error in it says enough
    cat::Span first = {}; // the earlier one of two
    cat::Span lost = {};  // a value that is read and then replaced or refused
};

// Calls `found` for each, in file order.   O(the text)
void find_doubtful(std::string const &bytes, cat::SourceMap const &map,
                   std::function<void(cDoubtful const &)> const &found);

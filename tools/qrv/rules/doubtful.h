#pragma once
// What is read without an error and yet may not be meant. It is found in the source map of a
// reading, so the text is not scanned again.
//
// A key that a map has already is repeated, unless both values are maps, or both are sets: the
// reader then merges the second into the first, and what counts are the keys inside.

#include "qrv/text/read/csourcemap.h"

#include <functional>
#include <string>
#include <vector>

enum class cWarning : unsigned char {
    duplicate_key,
    unknown_escape,
    leading_zero,
    wrapped_number,
    duplicate_member,
    empty_item,
    decimal_comma,
    mixed_brackets,
    comment_inside,
    strings
};

struct cDoubtful {
    cWarning warning;
    cat::Span span;
    cat::Span scope;                  // no warning if an error is in it
    cat::Span first = {};             // the earlier one of two, or what is around it
    std::vector<cat::Span> lost = {}; // the value that is replaced or ignored, in all its parts
};

// Calls `found` for each, in file order but for keys of maps that are merged.
//   O(the text), and what the reader does to merge
void find_doubtful(std::string const &bytes, cat::SourceMap const &map,
                   std::function<void(cDoubtful const &)> const &found);

#pragma once
// Finds text that is read without an error, but perhaps not as its author meant it. Uses the source
// map of a reading, so the text is not scanned again.
//
// A second entry with the same key is a repetition, unless both values are maps or both are sets:
// then the reader merges the second into the first, and only equal keys inside count.

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
    cat::Span scope;                  // an error inside it suppresses the warning
    cat::Span first = {};             // the first of two occurrences, or the text around this one
    std::vector<cat::Span> lost = {}; // all parts of the value that is replaced or ignored
};

// Calls `found` for each finding, in file order except for keys of merged maps.
//   O(the text), and the work of the reader's merges
void find_doubtful(std::string const &bytes, cat::SourceMap const &map,
                   std::function<void(cDoubtful const &)> const &found);

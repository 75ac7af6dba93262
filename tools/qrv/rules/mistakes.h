#pragma once
// One mistake in a file often causes several errors. A person wants to see the mistake once, as the
// error that is closest to it. These errors are one mistake:
//   1  a run of errors, as the library reports it (cat::ReadError::follows); the first one is shown
//   2  a byte or an open comment that ends the reading, and the errors at its position
//   3  unclosed brackets, one inside the other: the innermost is shown, since it took the closing
//      brackets of the others; a reference without ) is shown first, since it took everything
//   4  an error in a map, and later errors about a key that is written as a value, after =
//   5  an unclosed bracket, and the entries that it swallowed: entries with keys in a vector or a
//      set, and entries that a type does not have
//   6  an error that makes the reader confuse keys and values in a value of a declared type, and
//      the rules that the value as a whole breaks
//   7  a byte that is not a bracket but ends a map, and errors about keys after it, since the map
//      around it reads the rest of the entries

#include "qrv/text/read/creadreport.h"
#include "tools/qrv/output/diagnostic.h"

#include <vector>

inline cPlace place_of(cat::ReadError const &error) { return {error.line, error.column}; }
inline bool is_unclosed(cat::ReadError const &error) { return error.end_line != 0; }

struct cMistake {
    cat::ReadError error;
    std::vector<cat::ReadError> following;
    std::vector<cNote> notes = {};
};

// Makes `from`, and all that follows from it, follow from `to`.
void add_following(cMistake &to, cMistake const &from);

// A position at which the reader stops reading, or skips bytes.
struct cUnread {
    cat::ReadError error;
    bool to_the_end; // the rest of the text is not read
};

std::vector<cMistake> mistakes_of(std::string const &bytes, std::vector<cUnread> const &unread,
                                  std::vector<cat::ReadError> const &errors);

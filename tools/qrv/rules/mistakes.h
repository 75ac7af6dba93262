#pragma once
// One mistake in a text often causes several errors. A person wants to see the mistake once, and
// the error that is closest to it. These errors are one mistake:
//   1  a run of errors, as the library reports it (cat::ReadError::follows); the first one counts
//   2  a byte or an open comment that ends what is read, and what is reported there
//   3  brackets that are not closed, one inside the other: the innermost counts, since it took the
//      closing brackets of the others; a reference without ) counts before them, since it took all
//   4  after an error in a map: an error about a key that is written as a value, after =
//   5  what a bracket that is not closed has swallowed: entries with keys in a vector or a set, and
//      entries that a type does not have
//   6  an error that puts keys and values out of step in a value of a declared type: rules that the
//      value as a whole breaks
//   7  a byte that is not a bracket and yet ends a map: errors about keys after it, since the map
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

// `from` and all that follows from it then follow from `to`.
void add_following(cMistake &to, cMistake const &from);

// Bytes that are not read.
struct cUnread {
    cat::ReadError error;
    bool to_the_end; // nothing after them is read
};

std::vector<cMistake> mistakes_of(std::string const &bytes, std::vector<cUnread> const &unread,
                                  std::vector<cat::ReadError> const &errors);

#pragma once
// Puts the comments of a file into the text that the writer has produced for its value.

#include "qrv/core/cobj.h"
#include "qrv/text/read/csourcemap.h"

#include <cstdint>
#include <string>
#include <vector>

// The offsets of an entry that comments need; compact, since a file has very many entries. Offsets
// of absent parts are 0.
struct cEntrySpan {
    static constexpr std::uint32_t outermost = 0xFFFFFFFFu;

    std::uint32_t parent = outermost; // the number of the entry around it
    std::uint32_t anid = 0;           // its node's, 0 if it has none
    std::uint32_t begin = 0;
    std::uint32_t value_begin = 0;
    std::uint32_t open_end = 0; // after the opening bracket
    std::uint32_t close_begin = 0;
    std::uint32_t end = 0; // with the delimiter
};

// The writer writes some comments, writes those of a shared value at each of its places, and loses
// the others. So this class removes all comments from the written text and inserts the comments of
// the file, each once, next to its entry. Formatting the result again changes nothing.
//
//   above an entry     on separate lines, in the entry's indentation
//   after an entry     after it on its line; further comments below the first one
//   between entries    on separate lines, with one empty line if there were any
//   inside an entry that has no brackets in the new text: after it
//
// A comment that ends its line can't be in a container on one line. Such a container is written
// over many lines; if that isn't possible, the comment follows the container.
class cComments {
  public:
    // `map` belongs to `bytes`, which must outlive the object; the map need not.
    cComments(std::string const &bytes, cat::SourceMap const &map);

    // Sets containers in the value to many lines if a comment needs it.
    void make_room(objref const &value, cat::SourceMap const &map) const;

    // Returns the written text with all comments except those before the first token. `map` belongs
    // to the text, whose entries are in the order of the value.   O(n log n)
    std::string put_into(std::string const &text, cat::SourceMap const &map,
                         bool trailing_blanks) const;

  private:
    std::string const &bytes_;
    std::vector<cEntrySpan> entries_;
    std::vector<cat::SourceComment> comments_;
};

// Removes blanks and tabs before line ends, from text that has only comments and white space.
std::string without_trailing_blanks(std::string const &text);

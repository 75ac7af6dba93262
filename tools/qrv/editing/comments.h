#pragma once
// The comments of a file, put into the text that the writer made of its value.

#include "qrv/core/cobj.h"
#include "qrv/text/read/csourcemap.h"

#include <cstdint>
#include <string>
#include <vector>

// Of an entry of a text, what the comments need: a file has very many. Offsets of absent parts are
// 0.
struct cEntrySpan {
    static constexpr std::uint32_t outermost = 0xFFFFFFFFu;

    std::uint32_t parent = outermost; // the number of the entry around it
    std::uint32_t anid = 0;           // of its node, 0 if it has none
    std::uint32_t begin = 0;
    std::uint32_t value_begin = 0;
    std::uint32_t open_end = 0; // of the brackets
    std::uint32_t close_begin = 0;
    std::uint32_t end = 0; // with the delimiter
};

// The writer keeps some comments, writes those of a shared value at each of its places, and loses
// the others. So the text is written without comments, and all comments of the file are put in,
// each once, where its entry is written. Formatting the result again changes nothing.
//
//   above an entry     on lines of their own, in the entry's indentation
//   after an entry     after it on its line; more of them below the first one
//   between entries    on lines of their own, with one empty line where there were some
//   inside an entry that has no brackets in the new text: after it
//
// A comment that ends its line can't be in a container on one line. So that container is written
// over many lines; where it can't be, the comment comes after it.
class cComments {
  public:
    // The map is that of the bytes, which must outlive the object; the map and the value need not.
    cComments(std::string const &bytes, cat::SourceMap const &map);

    // Gives the containers in the value that the bytes made many lines where a comment needs them.
    void make_room(objref const &value, cat::SourceMap const &map) const;

    // What the writer made of the value, with the comments, but for those before the first token.
    // `map` is that of the text, which has the value's entries in their order.   O(n log n)
    std::string put_into(std::string const &text, cat::SourceMap const &map,
                         bool trailing_blanks) const;

  private:
    std::string const &bytes_;
    std::vector<cEntrySpan> entries_;
    std::vector<cat::SourceComment> comments_;
};

// The text without blanks and tabs before line ends. For text that is all comments and white space.
std::string without_trailing_blanks(std::string const &text);

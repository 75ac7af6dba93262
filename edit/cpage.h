#pragma once
// The text as lines, and the bytes that belong to an entry.

#include "qrv/text/read/csourcemap.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace qrv::edit {

class Page {
  public:
    // The first `size` bytes are the text itself. After one more byte, the donor's text may follow.
    Page(std::string_view text, size_t size);

    std::string_view text() const { return text_; }
    size_t size() const { return size_; } // without the donor's text
    std::string_view text(cat::Span span) const { return text_.substr(span.begin, span.size()); }
    std::string_view text(size_t begin, size_t end) const {
        return text_.substr(begin, end - begin);
    }
    std::string const &eol() const { return eol_; }

    size_t line_begin(size_t offset) const; // O(log lines)
    size_t line_end(size_t offset) const;   // after the line feed, or at the end of the text
    // The blanks at the start of the line with this offset.
    std::string_view indent(size_t offset) const;
    // Are there only blanks between the start of the line and the offset (or from it to the end)?
    bool begins_line(size_t offset) const;
    bool ends_line(size_t offset) const;
    // The start (or the end) of the blanks around the offset, on its line.
    size_t before_blanks(size_t offset) const;
    size_t after_blanks(size_t offset) const;

  private:
    std::string_view text_;
    size_t size_;
    std::string eol_;
    std::vector<size_t> begins_; // of all lines
};

// The bytes of one entry. Empty lines and comments of a whole section are between two extents and
// belong to neither.
struct Extent {
    size_t begin; // the start of its first line if whole_lines, else of its first byte
    size_t end;   // after its last line if whole_lines, else after its last byte
    size_t core;  // the start of key and value, after the comments above
    size_t tail;  // after delimiter and comments, without blanks
    bool whole_lines;
};

Extent extent_of(Page const &page, cat::SourceEntry const &entry,
                 std::vector<cat::SourceComment> const &comments);

// Does the text consist of blanks and tabs only?
bool is_blank(std::string_view text);

// Replaces `from` at the begin of each line by `to`, except inside strings.
std::string indented(std::string_view text, std::string_view from, std::string_view to);

// Does the text end inside a line comment, so that an addition would become part of it?
bool ends_in_line_comment(std::string_view text);

// Replaces all line ends except those inside strings.
std::string with_line_ends(std::string_view text, std::string const &eol);

} // namespace qrv::edit

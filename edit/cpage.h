#pragma once
// The text as lines: where an entry begins and ends with what belongs to it, and how it is laid
// out.

#include "qrv/text/read/csourcemap.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace qrv::edit {

class Page {
  public:
    // The first `size` bytes are the text itself. After one more byte, a donor's text may follow.
    Page(std::string_view text, size_t size);

    std::string_view text() const { return text_; }
    size_t size() const { return size_; } // without the donor's
    std::string_view text(cat::Span span) const { return text_.substr(span.begin, span.size()); }
    std::string_view text(size_t begin, size_t end) const {
        return text_.substr(begin, end - begin);
    }
    std::string const &eol() const { return eol_; }

    size_t line_begin(size_t offset) const; // O(log lines)
    size_t line_end(size_t offset) const;   // after the line feed, or at the end of the text
    // The blanks at the start of the line of that offset.
    std::string_view indent(size_t offset) const;
    // Are there only blanks on its line before, or after?
    bool begins_line(size_t offset) const;
    bool ends_line(size_t offset) const;
    // Before, and after, the blanks of its line around that offset.
    size_t before_blanks(size_t offset) const;
    size_t after_blanks(size_t offset) const;

  private:
    std::string_view text_;
    size_t size_;
    std::string eol_;
    std::vector<size_t> begins_; // of all lines
};

// The bytes of one entry. What is between two extents belongs to neither: empty lines, comments of
// a whole section.
struct Extent {
    size_t begin; // from the start of its first line, if only its own is on its lines
    size_t end;   // after its last line in that case
    size_t core;  // of key and value, after its comments above
    size_t tail;  // after delimiter and comments, without blanks
    bool whole_lines;
};

Extent extent_of(Page const &page, cat::SourceEntry const &entry,
                 std::vector<cat::SourceComment> const &comments);

// Has it only blanks and tabs?
bool is_blank(std::string_view text);

// A text with lines that begin with `from` begin with `to` instead, but for lines inside strings.
std::string indented(std::string_view text, std::string_view from, std::string_view to);

// Would what is written after the text on its last line belong to a comment?
bool ends_in_line_comment(std::string_view text);

// A text with line ends inside strings left alone and all others replaced.
std::string with_line_ends(std::string_view text, std::string const &eol);

} // namespace qrv::edit

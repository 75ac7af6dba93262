#include "edit/cpage.h"

#include <algorithm>

namespace qrv::edit {
namespace {

constexpr std::string_view blanks = " \t\r\f\v";

bool is_blank(char c) { return blanks.find(c) != std::string_view::npos; }

// Calls `line_end` with the offset of each line feed outside strings. Returns whether the text ends
// inside a line comment.
template <class Function> bool for_line_ends(std::string_view text, Function const &line_end) {
    char quote = '\0';
    bool line_comment = false, block_comment = false;
    for (size_t i = 0; i < text.size(); ++i) {
        std::string_view const two = text.substr(i, 2);
        if (text[i] == '\n' && !quote) {
            line_comment = false;
            line_end(i);
        } else if (block_comment) {
            if (two == "*/") block_comment = false, ++i;
        } else if (line_comment) {
            continue;
        } else if (quote) {
            if (text[i] == '\\')
                ++i;
            else if (text[i] == quote)
                quote = '\0';
        } else if (text[i] == '"' || text[i] == '\'') {
            quote = text[i];
        } else if (two == "//") {
            line_comment = true;
        } else if (two == "/*") {
            block_comment = true;
            ++i;
        }
    }
    return line_comment;
}

} // namespace

Page::Page(std::string_view text, size_t size)
    : text_(text), size_(size),
      eol_(text.find("\r\n") < text.find('\n') ? "\r\n" : "\n"), begins_{0} {
    for (size_t at = 0; (at = text.find('\n', at)) != std::string_view::npos;)
        begins_.push_back(++at);
}

size_t Page::line_begin(size_t offset) const {
    return *(std::upper_bound(begins_.begin(), begins_.end(), offset) - 1);
}

size_t Page::line_end(size_t offset) const {
    size_t const feed = text_.find('\n', offset);
    if (feed == size_) return size_;
    return feed == std::string_view::npos ? text_.size() : feed + 1;
}

std::string_view Page::indent(size_t offset) const {
    size_t const begin = line_begin(offset);
    size_t end = begin;
    while (end < text_.size() && (text_[end] == ' ' || text_[end] == '\t')) ++end;
    return text(begin, end);
}

bool Page::begins_line(size_t offset) const {
    size_t const at = before_blanks(offset);
    return at == 0 || text_[at - 1] == '\n';
}

bool Page::ends_line(size_t offset) const {
    size_t const at = after_blanks(offset);
    return at == text_.size() || text_[at] == '\n';
}

size_t Page::before_blanks(size_t offset) const {
    while (offset > 0 && is_blank(text_[offset - 1])) --offset;
    return offset;
}

size_t Page::after_blanks(size_t offset) const {
    while (offset < text_.size() && is_blank(text_[offset])) ++offset;
    return offset;
}

Extent extent_of(Page const &page, cat::SourceEntry const &entry,
                 std::vector<cat::SourceComment> const &comments) {
    Extent extent{entry.all().begin, entry.all().end, entry.all().begin, entry.all().end, false};
    for (cat::SourceComment const &comment : comments) {
        if (comment.where == cat::SourceComment::above)
            extent.begin = std::min<size_t>(extent.begin, comment.span.begin);
        if (comment.where == cat::SourceComment::after)
            extent.tail = std::max<size_t>(extent.tail, comment.span.end);
    }
    extent.end = extent.tail;
    extent.whole_lines = page.begins_line(extent.begin) && page.ends_line(extent.tail);
    if (extent.whole_lines) {
        extent.begin = page.line_begin(extent.begin);
        extent.end = page.line_end(extent.tail);
    }
    return extent;
}

bool is_blank(std::string_view text) {
    return text.find_first_not_of(" \t") == std::string_view::npos;
}

std::string indented(std::string_view text, std::string_view from, std::string_view to) {
    if (from == to) return std::string(text);
    std::string result;
    size_t copied = 0;
    for_line_ends(text, [&](size_t feed) {
        result += text.substr(copied, feed + 1 - copied);
        copied = feed + 1;
        if (text.substr(copied).starts_with(from) &&
            !text.substr(copied + from.size()).starts_with('\n')) {
            result += to;
            copied += from.size();
        }
    });
    return result += text.substr(copied);
}

bool ends_in_line_comment(std::string_view text) {
    return for_line_ends(text, [](size_t) {});
}

std::string with_line_ends(std::string_view text, std::string const &eol) {
    std::string result;
    size_t copied = 0;
    for_line_ends(text, [&](size_t feed) {
        bool const has_return = feed > copied && text[feed - 1] == '\r';
        result += text.substr(copied, feed - copied - (has_return ? 1 : 0));
        result += eol;
        copied = feed + 1;
    });
    return result += text.substr(copied);
}

} // namespace qrv::edit

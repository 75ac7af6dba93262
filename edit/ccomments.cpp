#include "edit/ccomments.h"

#include <algorithm>

namespace qrv::edit {

namespace {

// Does the text consist of comments, blanks and line ends, with at least one comment?
bool has_only_comments(std::string_view text) {
    bool any = false;
    for (size_t at = 0; (at = text.find_first_not_of(" \t\r\n", at)) != text.npos; any = true) {
        std::string_view const two = text.substr(at, 2);
        if (two != "//" && two != "/*") return false;
        size_t const end = two == "//" ? text.find('\n', at) : text.find("*/", at + 2);
        if (end == text.npos) return false;
        at = end + (two == "//" ? 1 : 2);
    }
    return any;
}

} // namespace

std::string Comments::of(Item const &item, Where where, std::string const &indent) const {
    std::string text;
    std::vector<size_t> numbers = lenders(item);
    if (item.old != none) numbers.push_back(item.old);
    // If the key was repeated, the comments of all its removed entries.
    if (item.old != none && item.moved && !entries_.is_once(item.old))
        numbers = entries_.of(entries_.anid(item.old));
    std::sort(numbers.begin(), numbers.end());
    for (size_t const number : numbers) {
        std::string const more = at(number, where, indent);
        if (more.find('\n') != more.npos && ends_in_line_comment(text))
            text += page_.eol() + indent; // otherwise it would become part of the line comment
        text += more;
    }
    return text;
}

std::string Comments::at(size_t number, Where where, std::string const &indent) const {
    std::string text;
    for (cat::SourceComment const &comment : entries_.comments(number)) {
        if (comment.where != where) continue;
        std::string const own =
            indented(page_.text(comment.span), page_.indent(comment.span.begin), indent);
        if (where == Where::after)
            text += page_.text(page_.before_blanks(comment.span.begin), comment.span.begin);
        text += own;
        if (where == Where::above) text += comment.own_line ? page_.eol() + indent : " ";
    }
    return brought(number, std::move(text));
}

std::string Comments::section_above(Item const &item, std::string const &indent) const {
    if (!entries_.is_donated(item.old)) return "";
    size_t const parent = entries_.entry(item.old).parent;
    if (parent == none) return "";
    auto const extent = [&](cat::SourceEntry const &entry) {
        return extent_of(page_, entry, entries_.comments(entry.number));
    };
    std::vector<cat::SourceEntry> const all = entries_.inside(parent);
    auto const own = std::find_if(all.begin(), all.end(), [&](cat::SourceEntry const &entry) {
        return entry.number == item.old;
    });
    bool const header = own == all.begin() && parent == entries_.donor();
    if (header || own == all.end()) return "";
    size_t const before =
        own == all.begin() ? entries_.frame(parent).open.end : extent(*std::prev(own)).tail;
    size_t const begin = page_.line_begin(extent(*own).begin);
    size_t const first = page_.ends_line(before) ? page_.line_end(before) : begin;
    if (first >= begin || !page_.begins_line(extent(*own).begin)) return "";
    std::string_view const text = page_.text(first, begin);
    if (!has_only_comments(text)) return "";
    std::string const from(page_.indent(extent(*own).begin));
    bool const indented_first = text.starts_with(from);
    return brought(item.old,
                   (indented_first ? indent : "") +
                       indented(text.substr(indented_first ? from.size() : 0), from, indent));
}

std::string Comments::before_delimiter(Item const &item) const {
    if (item.old == none || entries_.entry(item.old).delimiter.empty()) return "";
    cat::SourceEntry const entry = entries_.entry(item.old);
    std::string_view const text = page_.text(entry.value.end, entry.delimiter.begin);
    return text.find('/') == std::string_view::npos ? "" : brought(item.old, std::string(text));
}

std::string Comments::at_separator(Item const &item, std::string const &indent) const {
    if (item.old == none || !item.parent || !is_list(*item.parent->value)) return "";
    cat::SourceEntry const entry = entries_.entry(item.old);
    if (entry.key.empty() || entry.separator.empty()) return "";
    std::string text(page_.text(entry.key.end, entry.separator.begin));
    text += page_.text(entry.separator.end, entry.value.begin);
    if (text.find('/') == text.npos) return "";
    text.erase(0, text.find('/'));
    return brought(item.old, indented(text, page_.indent(entry.all().begin), indent));
}

// The donor's repeated keys are written once, with the comments of all their entries. A value that
// replaced another one lends its comments to an entry without comments.
std::vector<size_t> Comments::lenders(Item const &item) const {
    size_t const donated = entries_.is_once(item.old) ? item.old : item.donated;
    if (donated == none) return {};
    if (donated != item.old && !entries_.comments(item.old).empty()) return {};
    std::vector<size_t> numbers = entries_.of(entries_.anid(donated));
    std::erase_if(numbers, [&](size_t number) {
        return number == item.old || entries_.comments(number).empty();
    });
    return numbers;
}

std::string Comments::brought(size_t number, std::string text) const {
    return entries_.is_donated(number) ? with_line_ends(text, page_.eol()) : std::move(text);
}

} // namespace qrv::edit

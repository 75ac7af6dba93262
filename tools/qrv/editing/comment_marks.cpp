#include "tools/qrv/editing/comment_marks.h"

#include "qrv/containers/cmapobj.h"
#include "qrv/text/file/cfile.h"
#include "tools/qrv/output/lines.h"
#include "tools/qrv/reading/scan.h"

#include <algorithm>
#include <charconv>
#include <map>
#include <random>

namespace {

constexpr char const *white = " \t\r\n";

std::string new_word() {
    std::random_device random;
    return "qrv" + std::to_string(random()) + "x" + std::to_string(random()) + "x";
}

// The offsets of the single comments in the comment of a value (get_comment()).
std::vector<size_t> begins_in(std::string const &text) {
    std::vector<size_t> begins;
    size_t at = text.find_first_not_of(white);
    while (at != text.npos && text.size() - at > 1) {
        begins.push_back(at);
        bool const line = text[at + 1] == '/';
        size_t const end = line ? text.find('\n', at) : text.find("*/", at + 2);
        if (end == text.npos) break;
        at = text.find_first_not_of(white, end + (line ? 0 : 2));
    }
    return begins;
}

std::string first_line(std::string const &text) { return text.substr(0, text.find('\n')); }

void report(cPlace place, std::string const &text, cMessages &messages) {
    messages.error(place, "this comment would be lost: " + shortened(first_line(text)));
}

} // namespace

cCommentMarks::cCommentMarks(std::string const &bytes, cat::SourceMap const &map,
                             cReading const &reading)
    : bytes_(bytes), map_(map),
      text_after_(reading.after ? cLines(bytes).offset(*reading.after) : bytes.size()),
      word_(new_word()), counts_(map.comments().size()) {
    for (size_t i = 0; i < counts_.size(); ++i)
        if (std::uint32_t const value = map.comments()[i].obid) by_value_[value].push_back(i);
    if (!by_value_.empty()) mark(reading.value);
}

// Uses an explicit stack: references create values that are deeper than the nesting of any text.
void cCommentMarks::mark(objref const &root) {
    std::unordered_set<cObj const *> met;
    std::vector<cObj *> todo{root.get()};
    while (!todo.empty()) {
        cObj *const value = todo.back();
        todo.pop_back();
        auto const *const map = dynamic_cast<cMapObj const *>(value);
        auto const comments = by_value_.find(value->obid());
        if ((map || comments != by_value_.end()) && !met.insert(value).second) continue;
        if (comments != by_value_.end()) mark_comment(*value, comments->second);
        if (!map) continue;
        cAttrHash const &hash = map->datamap();
        for (cAttrNode const *node = hash.first(); node; node = hash.next(node))
            if (node->valref()) todo.push_back(node->valref().get());
    }
}

void cCommentMarks::mark_comment(cObj &value, std::vector<size_t> const &numbers) const {
    std::string text;
    if (!value.get_comment(text)) return;
    std::vector<size_t> const begins = begins_in(text);
    if (begins.size() != numbers.size()) return;
    for (size_t i = begins.size(); i > 0; --i)
        text.insert(begins[i - 1] + 2, word_ + std::to_string(numbers[i - 1]) + ":");
    value.set_comment(text, true);
}

std::string cCommentMarks::removed_from(std::string const &text) {
    std::string rest;
    rest.reserve(text.size());
    size_t done = 0;
    for (size_t at = text.find(word_); at != text.npos; at = text.find(word_, done)) {
        rest.append(text, done, at - done);
        size_t number = 0;
        char const *const digits = text.data() + at + word_.size();
        done = static_cast<size_t>(std::from_chars(digits, text.data() + text.size(), number).ptr +
                                   1 - text.data());
        ++counts_[number];
    }
    return rest.append(text, done);
}

std::string cCommentMarks::text_of(size_t number) const {
    cat::Span const span = map_.comments()[number].span;
    std::string text = bytes_.substr(span.begin, span.size());
    cat::rmchar(text, '\r');
    return text;
}

// The comments that follow a #cRef, with at most a separator in between.
std::unordered_set<size_t> cCommentMarks::at_references() const {
    std::unordered_set<size_t> ends, found;
    for (size_t i = 0; i < map_.size(); ++i)
        if (cat::SourceEntry const entry = map_.entry(i); entry.reference)
            ends.insert({entry.value.end, entry.all().end});
    bool follows = false;
    size_t end = 0; // the end of the previous comment
    for (size_t i = 0; i < map_.comments().size(); ++i) {
        size_t const begin = map_.comments()[i].span.begin;
        size_t const token = begin == 0 ? bytes_.npos : bytes_.find_last_not_of(white, begin - 1);
        size_t const before = token == bytes_.npos ? 0 : token + 1;
        if (before != end || end == 0) follows = ends.contains(before);
        if (follows) found.insert(i);
        end = map_.comments()[i].span.end;
    }
    return found;
}

void cCommentMarks::report_lost(bool head_is_written, cMessages &messages) const {
    size_t const head_end = map_.size() > 0 && head_is_written ? map_.entry(0).all().begin : 0;
    std::map<std::string, size_t> repeated; // the number of additional copies of each text
    for (size_t i = 0; i < counts_.size(); ++i)
        if (counts_[i] > 1) repeated[text_of(i)] += counts_[i] - 1;
    std::unordered_set<size_t> const at_reference =
        repeated.empty() ? std::unordered_set<size_t>() : at_references();
    cLines const lines(bytes_);
    for (size_t i = 0; i < counts_.size(); ++i) {
        cat::Span const span = map_.comments()[i].span;
        if (counts_[i] > 0 || span.begin < head_end) continue;
        auto const more = repeated.find(text_of(i));
        if (at_reference.contains(i) && more != repeated.end() && more->second > 0)
            --more->second;
        else
            report(lines.place(span.begin), text_of(i), messages);
    }
    cPlace const after = lines.place(text_after_);
    for (cComment const &comment : scan_of(bytes_.substr(text_after_)).comments)
        report({comment.place.line + after.line - 1, comment.place.line == 1
                                                         ? comment.place.column + after.column - 1
                                                         : comment.place.column},
               comment.text, messages);
}

#include "tools/qrv/editing/comments.h"

#include "qrv/containers/citerobj.h"
#include "qrv/containers/cmapobj.h"
#include "qrv/core/cobjd.h"
#include "qrv/text/write/cwriter.h"
#include "tools/qrv/output/characters.h"

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <numeric>
#include <optional>
#include <span>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <utility>

namespace {

using cat::SourceComment;
using cat::SourceEntry;

constexpr size_t none = SourceEntry::none;

size_t white_begin(std::string const &text, size_t at) {
    while (at > 0 && is_white(text[at - 1])) --at;
    return at;
}

size_t white_end(std::string const &text, size_t at) {
    while (at < text.size() && is_white(text[at])) ++at;
    return at;
}

bool is_between_brackets(cEntrySpan const &entry, size_t offset) {
    return entry.open_end != 0 && offset >= entry.open_end &&
           (entry.close_begin == 0 || offset < entry.close_begin);
}

cEntrySpan span_of(SourceEntry const &entry) {
    return {.parent = entry.parent == none ? cEntrySpan::outermost
                                           : static_cast<std::uint32_t>(entry.parent),
            .anid = entry.anid,
            .begin = entry.all().begin,
            .value_begin = entry.value.begin,
            .open_end = entry.open.end,
            .close_begin = entry.close.begin,
            .end = entry.all().end};
}

std::vector<cEntrySpan> entries_of(cat::SourceMap const &map) {
    std::vector<cEntrySpan> entries;
    entries.reserve(map.size());
    for (size_t i = 0; i < map.size(); ++i) entries.push_back(span_of(map.entry(i)));
    return entries;
}

size_t parent_of(cEntrySpan const &entry) {
    return entry.parent == cEntrySpan::outermost ? none : entry.parent;
}

// The numbers of the entries directly inside each entry, in order.
class cChildren {
  public:
    explicit cChildren(std::vector<cEntrySpan> const &entries)
        : begins_(entries.size() + 1), numbers_(entries.empty() ? 0 : entries.size() - 1) {
        for (cEntrySpan const &entry : entries)
            if (parent_of(entry) != none) ++begins_[entry.parent + 1];
        std::partial_sum(begins_.begin(), begins_.end(), begins_.begin());
        std::vector<std::uint32_t> next(begins_.begin(), begins_.end() - 1);
        for (size_t i = 0; i < entries.size(); ++i)
            if (parent_of(entries[i]) != none)
                numbers_[next[entries[i].parent]++] = static_cast<std::uint32_t>(i);
    }

    std::span<std::uint32_t const> operator[](size_t entry) const {
        return std::span(numbers_).subspan(begins_[entry], begins_[entry + 1] - begins_[entry]);
    }

  private:
    std::vector<std::uint32_t> begins_; // the begin of each entry's part of numbers_, and the end
    std::vector<std::uint32_t> numbers_;
};

// Removes carriage returns as the library does in comments: one between * and / becomes a blank.
std::string without_returns(std::string_view text) {
    std::string result;
    for (size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '\r')
            result += text[i];
        else if (!result.empty() && result.back() == '*' && text.substr(i + 1).starts_with('/'))
            result += ' ';
    }
    return result;
}

// --- comments of the file ---

// One comment with the white space around it.
struct cRemark {
    std::string text;
    std::string gap;         // the white space before it on its line
    size_t lines_before = 0; // line ends between it and the text before it
    size_t lines_after = 0;
    bool own_line = false;

    bool to_line_end() const { return text.starts_with("//"); }
    bool needs_lines() const {
        return own_line || to_line_end() || text.find('\n') != std::string::npos;
    }
};

cRemark remark_of(std::string const &bytes, SourceComment const &comment) {
    cRemark remark;
    auto const lines = [&](size_t begin, size_t end) {
        return static_cast<size_t>(std::count(bytes.begin() + static_cast<std::ptrdiff_t>(begin),
                                              bytes.begin() + static_cast<std::ptrdiff_t>(end),
                                              '\n'));
    };
    size_t const begin = comment.span.begin, end = comment.span.end;
    remark.text = without_returns(std::string_view(bytes).substr(begin, end - begin));
    size_t gap = begin;
    while (gap > 0 && is_blank(bytes[gap - 1])) --gap;
    remark.gap = bytes.substr(gap, begin - gap);
    remark.lines_before = lines(white_begin(bytes, begin), begin);
    remark.lines_after = lines(end, white_end(bytes, end));
    remark.own_line = comment.own_line;
    return remark;
}

// --- the written text ---

// The written text without its comments, and the offsets of its entries.
class cWritten {
  public:
    cWritten(std::string const &text, cat::SourceMap const &map) {
        size_t done = 0;
        text_.reserve(text.size());
        for (SourceComment const &comment : map.comments()) {
            size_t const begin = std::max(done, white_begin(text, comment.span.begin));
            text_.append(text, done, begin - done);
            done = comment.span.end;
            cuts_.push_back({begin, done - begin + (cuts_.empty() ? 0 : cuts_.back().removed)});
        }
        text_.append(text, done);
        entries_ = entries_of(map);
        if (cuts_.empty()) return;
        for (cEntrySpan &entry : entries_)
            for (std::uint32_t *offset : {&entry.begin, &entry.value_begin, &entry.open_end,
                                          &entry.close_begin, &entry.end})
                *offset = moved(*offset);
    }

    std::string const &text() const { return text_; }
    std::vector<cEntrySpan> const &entries() const { return entries_; }
    cEntrySpan const &entry(size_t number) const { return entries_[number]; }
    size_t begin(size_t number) const { return entries_[number].begin; }
    size_t end(size_t number) const { return entries_[number].end; }

    // Is each entry of the container on a separate line?
    bool has_lines(size_t container) const {
        size_t at = entries_[container].open_end;
        while (at < text_.size() && is_blank(text_[at])) ++at;
        return at < text_.size() && text_[at] == '\n';
    }

    // The white space at the begin of the lines of a container's entries.
    std::string indentation(size_t container) const {
        size_t const begin = entries_[container].open_end, end = white_end(text_, begin);
        size_t const line = text_.rfind('\n', end - 1) + 1;
        std::string const found = text_.substr(line, end - line);
        if (end != entries_[container].close_begin) return found;
        return found + (container == 0 ? "  " : "    "); // an empty one: the writer's indent
    }

  private:
    struct cCut {
        size_t at;
        size_t removed; // bytes removed by this cut and all before it
    };

    std::uint32_t moved(std::uint32_t offset) const {
        auto const after =
            std::lower_bound(cuts_.begin(), cuts_.end(), offset,
                             [](cCut const &cut, std::uint32_t at) { return cut.at < at; });
        size_t const removed = after == cuts_.begin() ? 0 : std::prev(after)->removed;
        return static_cast<std::uint32_t>(offset - removed);
    }

    std::string text_;
    std::vector<cEntrySpan> entries_;
    std::vector<cCut> cuts_;
};

// --- entries of the file and of the written text ---

// Matches them by position: the n-th node of a container in the file is the n-th entry that was
// written. A node may have several entries in the file.
class cMatching {
  public:
    cMatching(std::vector<cEntrySpan> const &from, std::vector<cEntrySpan> const &to)
        : from_(from), from_children_(from), to_(from.size(), cEntrySpan::outermost) {
        if (from.empty() || to.empty()) return;
        cChildren const to_children(to);
        pair({0}, 0);
        while (!open_.empty()) {
            cPair const pair = std::move(open_.back());
            open_.pop_back();
            match(pair.from, to_children[pair.to]);
        }
    }

    size_t operator[](size_t entry) const {
        return to_[entry] == cEntrySpan::outermost ? none : to_[entry];
    }
    std::span<std::uint32_t const> inside(size_t entry) const { return from_children_[entry]; }

  private:
    using cNumbers = std::vector<std::uint32_t>;
    struct cPair {
        cNumbers from;
        std::uint32_t to;
    };

    // Matches the entries, and queues them if they have entries inside.
    void pair(cNumbers const &from, std::uint32_t to) {
        bool is_container = false;
        for (std::uint32_t const entry : from) {
            to_[entry] = to;
            is_container |= !from_children_[entry].empty();
        }
        if (is_container) open_.push_back({from, to});
    }

    void match(cNumbers const &outer, std::span<std::uint32_t const> inner) {
        if (outer.size() == 1 && each_has_a_node(from_children_[outer[0]]) &&
            from_children_[outer[0]].size() == inner.size()) {
            for (size_t i = 0; i < inner.size(); ++i) pair({from_children_[outer[0]][i]}, inner[i]);
            return;
        }
        std::vector<cNumbers> groups = groups_in(outer, true);
        if (groups.size() != inner.size()) groups = groups_in(outer, false);
        for (size_t i = 0; i < std::min(groups.size(), inner.size()); ++i)
            pair(groups[i], inner[i]);
    }

    // Does each entry have a different node? The ids grow in the order of creation.
    bool each_has_a_node(std::span<std::uint32_t const> entries) const {
        std::uint32_t before = 0;
        return std::all_of(entries.begin(), entries.end(), [&](std::uint32_t entry) {
            return std::exchange(before, from_[entry].anid) < from_[entry].anid;
        });
    }

    // The entries inside these entries; those with the same node are one group.
    std::vector<cNumbers> groups_in(cNumbers const &outer, bool with_node) const {
        std::vector<cNumbers> groups;
        std::unordered_map<std::uint32_t, size_t> by_node;
        for (std::uint32_t const around : outer)
            for (std::uint32_t const entry : from_children_[around]) {
                std::uint32_t const node = from_[entry].anid;
                if (node == 0 && with_node) continue;
                auto const [known, fresh] = by_node.try_emplace(node, groups.size());
                if (fresh || node == 0)
                    groups.push_back({entry});
                else
                    groups[known->second].push_back(entry);
            }
        return groups;
    }

    std::vector<cEntrySpan> const &from_;
    cChildren from_children_;
    cNumbers to_;
    std::vector<cPair> open_;
};

// --- the new position of a comment ---

// A gap is the white space after a token of the written text.
struct cPlaced {
    size_t gap;       // the end of that token
    bool own_line;    // if false, the comment follows the token on its line
    size_t container; // the container of the gap; none after the outermost value
    size_t number;    // the number of the comment
    bool moved;       // the comment moved to the end of another line, so its old gap is dropped
};

class cPlacing {
  public:
    cPlacing(std::vector<cEntrySpan> const &entries, cWritten const &written)
        : entries_(entries), written_(written), to_(entries, written.entries()) {}

    cPlaced place(SourceComment const &comment, cRemark const &remark) const {
        cPlaced placed = wished(comment);
        while (placed.container != none && remark.needs_lines() &&
               !written_.has_lines(placed.container)) {
            placed = after(placed.container);
            placed.moved = true;
        }
        return placed;
    }

  private:
    cPlaced wished(SourceComment const &comment) const {
        if (comment.entry == none) return after(0);
        size_t const to = to_[comment.entry];
        if (to != none && comment.where == SourceComment::above) return above(to);
        if (to != none && comment.where == SourceComment::after) return after(to);
        return inside(comment.entry, comment);
    }

    cPlaced above(size_t entry) const {
        size_t const begin = written_.begin(entry);
        return {white_begin(written_.text(), begin), true, parent_of(written_.entry(entry)), 0,
                false};
    }

    cPlaced after(size_t entry) const {
        return {written_.end(entry), false, parent_of(written_.entry(entry)), 0, false};
    }

    cPlaced inside(size_t around, SourceComment const &comment) const {
        while (to_[around] == none) around = parent_of(entries_[around]);
        size_t const to = to_[around], offset = comment.span.begin;
        cEntrySpan const &entry = entries_[around];
        bool const before = offset < (entry.open_end == 0 ? entry.value_begin : entry.open_end);
        if (written_.entry(to).open_end == 0 || (!before && !is_between_brackets(entry, offset))) {
            cPlaced placed = after(to);
            placed.moved = true;
            return placed;
        }
        if (!before)
            if (std::optional<size_t> const last = last_before(around, offset))
                return {written_.end(*last), true, to, 0, false};
        return {written_.entry(to).open_end, !before && comment.own_line, to, 0, before};
    }

    // The last written entry inside `around` that was before the offset in the file.
    std::optional<size_t> last_before(size_t around, size_t offset) const {
        std::span<std::uint32_t const> const inner = to_.inside(around);
        auto it = std::lower_bound(
            inner.begin(), inner.end(), offset,
            [&](std::uint32_t entry, size_t at) { return entries_[entry].begin < at; });
        while (it != inner.begin()) {
            size_t const to = to_[*--it];
            if (to != none && parent_of(written_.entry(to)) == to_[around]) return to;
        }
        return std::nullopt;
    }

    std::vector<cEntrySpan> const &entries_;
    cWritten const &written_;
    cMatching to_;
};

// --- the new text ---

class cJoining {
  public:
    cJoining(cWritten const &written, std::vector<cRemark> const &remarks, bool trailing_blanks)
        : written_(written), text_(written.text()), remarks_(remarks),
          trailing_blanks_(trailing_blanks) {}

    std::string join(std::vector<cPlaced> const &placed) {
        out_.reserve(text_.size());
        std::vector<size_t> gaps;
        gaps.reserve(written_.entries().size() + placed.size());
        for (size_t i = 0; i < written_.entries().size(); ++i) gaps.push_back(written_.end(i));
        for (cPlaced const &one : placed) gaps.push_back(one.gap);
        std::sort(gaps.begin(), gaps.end());
        gaps.erase(std::unique(gaps.begin(), gaps.end()), gaps.end());
        auto next = placed.begin();
        for (size_t const gap : gaps) {
            auto const first = next;
            while (next != placed.end() && next->gap == gap) ++next;
            out_.append(text_, done_, gap - done_);
            done_ = white_end(text_, gap);
            if (first == next)
                copy_white(std::string_view(text_).substr(gap, done_ - gap));
            else
                fill({first, next}, text_.substr(gap, done_ - gap));
        }
        return out_.append(text_, done_);
    }

  private:
    using cGroup = std::vector<cPlaced>;

    void copy_white(std::string_view white) {
        size_t const line = white.find('\n');
        out_ += trailing_blanks_ || line == white.npos ? white : white.substr(line);
    }

    void fill(cGroup const &group, std::string const &white) {
        size_t const line = white.find('\n');
        if (group.front().container == none) {
            fill_end(group);
            out_ += white;
        } else if (written_.has_lines(group.front().container)) {
            fill_lines(group);
            out_ += line == std::string::npos ? white : white.substr(line);
        } else {
            fill_line(group, white);
        }
    }

    bool at_open(cPlaced const &placed) const {
        return placed.container != none && placed.gap == written_.entry(placed.container).open_end;
    }

    void fill_line(cGroup const &group, std::string const &white) {
        bool const open = at_open(group.front());
        if (open) out_ += white;
        for (cPlaced const &placed : group) {
            std::string const text = text_of(placed, "");
            out_ += open ? text + " " : " " + text;
        }
        if (!open) out_ += white.empty() ? " " : white;
    }

    void fill_lines(cGroup const &group) {
        bool const open = at_open(group.front());
        std::string const indent = written_.indentation(group.front().container);
        size_t column = 0;
        bool ended = false; // did a comment end the line?
        for (size_t i = 0; i < group.size(); ++i) {
            cRemark const &remark = remarks_[group[i].number];
            bool const own = group[i].own_line || (i > 0 && (ended || remark.own_line));
            if (!own) {
                out_ += i > 0 || remark.own_line || group[i].moved ? " " : remark.gap;
                column = out_.size() - (out_.rfind('\n') + 1);
            } else {
                bool const below = !group[i].own_line && !open;
                if (!below && remark.lines_before > 1 && (i > 0 || !open)) out_ += '\n';
                out_ += '\n' + (below ? std::string(column, ' ') : indent);
            }
            out_ += text_of(group[i], own ? indent : "");
            ended = own || remark.to_line_end();
        }
        cPlaced const &last = group.back();
        bool const closes =
            done_ == written_.entry(last.container).close_begin; // no empty line before it
        if (last.own_line && remarks_[last.number].lines_after > 1 && !closes) out_ += '\n';
    }

    // Writes comments after the outermost value.
    void fill_end(cGroup const &group) {
        for (size_t i = 0; i < group.size(); ++i) {
            cRemark const &remark = remarks_[group[i].number];
            bool const before = i > 0 && remarks_[group[i - 1].number].to_line_end();
            if (group[i].moved)
                out_ += before ? "\n" : " ";
            else if (remark.own_line)
                out_ += (remark.lines_before > 1 ? "\n\n" : "\n") + remark.gap;
            else
                out_ += before ? "\n" : remark.gap;
            out_ += text_of(group[i], remark.gap);
        }
    }

    // The further lines of a comment move with its first one.
    std::string text_of(cPlaced const &placed, std::string const &indent) const {
        cRemark const &remark = remarks_[placed.number];
        std::string text = remark.text;
        if (!trailing_blanks_) {
            text = without_trailing_blanks(text + '\n');
            text.pop_back();
        }
        if (!remark.own_line || !placed.own_line || remark.gap == indent) return text;
        for (size_t at = text.find('\n'); at != std::string::npos; at = text.find('\n', at + 1)) {
            bool const empty = at + 1 == text.size() || text[at + 1] == '\n';
            if (!empty && text.compare(at + 1, remark.gap.size(), remark.gap) == 0)
                text.replace(at + 1, remark.gap.size(), indent);
        }
        return text;
    }

    cWritten const &written_;
    std::string const &text_;
    std::vector<cRemark> const &remarks_;
    bool trailing_blanks_;
    std::string out_;
    size_t done_ = 0; // offset up to which the text is copied
};

// Sets the containers with these obids to many lines.
class cRoom {
  public:
    explicit cRoom(std::unordered_set<std::uint32_t> const &wanted) : wanted_(wanted) {}

    void visit(objref const &value) {
        if (!value || !visited_.insert(value.get()).second) return;
        if (wanted_.count(value->obid()) && *cat::wformat(*value) == 's')
            value->set_omember(std::string("wformat"), cat::of("wc"));
        if (!dynamic_cast<cMapObj const *>(value.get())) return;
        for (cIterObj it = value->begin(); it.valid(); ++it) visit(it.valref());
    }

  private:
    std::unordered_set<std::uint32_t> const &wanted_;
    std::unordered_set<cObj const *> visited_;
};

} // namespace

std::string without_trailing_blanks(std::string const &text) {
    std::string result;
    for (char const c : text) {
        if (c == '\n')
            while (!result.empty() && is_blank(result.back())) result.pop_back();
        result += c;
    }
    return result;
}

cComments::cComments(std::string const &bytes, cat::SourceMap const &map)
    : bytes_(bytes), entries_(entries_of(map)) {
    if (entries_.empty()) return;
    for (SourceComment const &comment : map.comments())
        if (comment.span.begin >= entries_[0].value_begin) comments_.push_back(comment);
}

void cComments::make_room(objref const &root, cat::SourceMap const &map) const {
    std::vector<bool> needs_lines(entries_.size());
    std::unordered_set<std::uint32_t> wanted;
    for (SourceComment const &comment : comments_) {
        if (comment.entry == none || !remark_of(bytes_, comment).needs_lines()) continue;
        cEntrySpan const &entry = entries_[comment.entry];
        bool const inside = comment.where == SourceComment::inside && entry.open_end != 0 &&
                            (entry.close_begin == 0 || comment.span.begin < entry.close_begin);
        size_t around = inside ? comment.entry : parent_of(entry);
        for (; around != none && !needs_lines[around]; around = parent_of(entries_[around])) {
            needs_lines[around] = true;
            if (std::uint32_t const value = map.entry(around).obid) wanted.insert(value);
        }
    }
    if (!wanted.empty()) cRoom(wanted).visit(root);
}

std::string cComments::put_into(std::string const &text, cat::SourceMap const &map,
                                bool trailing_blanks) const {
    cWritten const written(text, map);
    if (written.entries().empty() || entries_.empty()) return text;
    std::optional<cPlacing> placing;
    if (!comments_.empty()) placing.emplace(entries_, written);
    std::vector<cRemark> remarks;
    std::vector<cPlaced> placed;
    for (SourceComment const &comment : comments_) {
        remarks.push_back(remark_of(bytes_, comment));
        placed.push_back(placing->place(comment, remarks.back()));
        placed.back().number = remarks.size() - 1;
    }
    std::stable_sort(placed.begin(), placed.end(), [](cPlaced const &a, cPlaced const &b) {
        return a.gap != b.gap ? a.gap < b.gap : a.own_line < b.own_line;
    });
    return cJoining(written, remarks, trailing_blanks).join(placed);
}

// Reads the text to find the spans of its comments, and walks its tree in parallel with the tree of
// the program, which has the same form. Replaces, inserts or removes the comments in the text by
// their spans. Then reads the result, to test that each value has its comment.
//
// The reader gives a comment to the value before it, even a comment above an entry that describes
// the entry. Such a comment is never replaced or removed: a person wrote it about another entry.

#include "value/comments.h"

#include "qrv/text/read/csourcemap.h"
#include "qrv/value/items.h"
#include "value/reading.h"

#include <algorithm>
#include <unordered_set>

namespace qrv::detail {

namespace {

std::string raw_comment(cObj const &object) {
    std::string raw;
    return object.get_comment(raw) ? raw : std::string();
}

// Calls `visit` with each pair of values that have the same path in two trees, once for each value
// of the first tree.
template <class Visit> void walk_both(value const &a, value const &b, Visit const &visit) {
    std::unordered_set<cObj const *> seen;
    std::vector<std::pair<value, value>> waiting{{a, b}};
    while (!waiting.empty()) {
        auto const [left, right] = std::move(waiting.back());
        waiting.pop_back();
        if (left.is_nil() || right.is_nil()) continue;
        if (!seen.insert(left.object().get()).second) continue;
        visit(left, right);
        if (!left.is_container() || !right.is_container()) continue;
        element_iterator other = right.begin();
        for (value const &part : left) {
            if (other == right.end()) break;
            waiting.emplace_back(part, *other);
            ++other;
        }
    }
}

template <class Visit> void walk(value const &root, Visit const &visit) {
    walk_both(root, root, [&](value const &v, value const &) { visit(v); });
}

std::vector<std::string> lines_of(std::string const &comment) {
    std::vector<std::string> lines;
    for (std::size_t begin = 0; begin <= comment.size();) {
        std::size_t const end = std::min(comment.find('\n', begin), comment.size());
        lines.push_back(comment.substr(begin, end - begin));
        begin = end + 1;
    }
    return lines;
}

// One reading of text, with the positions in it.
struct reading {
    reading(std::string const &text, options const &how) {
        std::vector<cat::ReadError> errors;
        root = read_value(text, {}, how, errors);
        map.stop();
        good = errors.empty();
    }

    cat::SourceMap map; // declared before `root`, since it records the reading
    value root;
    bool good;
};

// Text and its replacements, which may be added in any order.
class patched_text {
  public:
    explicit patched_text(std::string const &text) : text_(text) {}

    // `existing`: the comments that the value has. `at`: its entry.
    void set(std::vector<cat::SourceComment> const &existing, cat::SourceEntry const &at,
             std::string const &comment) {
        if (comment.empty()) {
            for (cat::SourceComment const &each : existing) remove(each);
        } else if (existing.empty()) {
            bool const is_open = !at.open.empty() && ends_line(at.open.end);
            insert(is_open ? at.open.end : at.all().end, comment);
        } else {
            replace(existing.front(), comment);
            std::for_each(existing.begin() + 1, existing.end(),
                          [this](cat::SourceComment const &each) { remove(each); });
        }
    }

    std::string result() {
        std::ranges::sort(patches_, std::greater(), &patch::begin);
        std::string text = text_;
        for (patch const &each : patches_)
            text.replace(each.begin, each.end - each.begin, each.bytes);
        return text;
    }

  private:
    struct patch {
        std::size_t begin;
        std::size_t end;
        std::string bytes;
    };

    std::size_t line_begin(std::size_t at) const {
        return at == 0 ? 0 : text_.rfind('\n', at - 1) + 1;
    }
    std::size_t blanks_before(std::size_t at) const {
        std::size_t begin = at;
        while (begin > 0 && (text_[begin - 1] == ' ' || text_[begin - 1] == '\t')) --begin;
        return begin;
    }
    bool begins_line(std::size_t at) const { return blanks_before(at) == line_begin(at); }
    std::string line_end() const {
        std::size_t const at = text_.find('\n');
        return at != 0 && at != std::string::npos && text_[at - 1] == '\r' ? "\r\n" : "\n";
    }
    // As many blanks as there are columns before the position.
    std::string indent_of(std::size_t at) const {
        std::size_t const begin = line_begin(at);
        std::string indent = text_.substr(begin, at - begin);
        for (char &c : indent)
            if (c != '\t') c = ' ';
        return indent;
    }

    std::string line_comments(std::string const &comment, std::string const &indent) const {
        std::string result;
        for (std::string const &line : lines_of(comment)) {
            if (!result.empty()) result += line_end() + indent;
            result += line.empty() ? "//" : "// " + line;
        }
        return result;
    }

    bool ends_line(std::size_t at) const {
        std::size_t const next = text_.find_first_not_of(" \t\r", at);
        return next == std::string::npos || text_[next] == '\n';
    }

    void insert(std::size_t at, std::string const &comment) {
        bool const is_last = ends_line(at);
        std::string const bytes =
            is_last ? line_comments(comment, indent_of(at) + " ") : "/* " + comment + " */";
        patches_.push_back({at, at, " " + bytes});
    }

    void replace(cat::SourceComment const &old, std::string const &comment) {
        bool const is_block = text_[old.span.begin + 1] == '*';
        std::string const indent = indent_of(old.span.begin);
        patches_.push_back({old.span.begin, old.span.end,
                            is_block ? "/* " + comment + " */" : line_comments(comment, indent)});
    }

    // Removes the comment and its line, if the line has nothing else; else the comment and the
    // blanks before it.
    void remove(cat::SourceComment const &old) {
        std::size_t begin = blanks_before(old.span.begin);
        std::size_t end = old.span.end;
        if (!ends_line(end)) {
            begin = old.span.begin;
            end = text_.find_first_not_of(" \t", end);
        } else if (begins_line(begin)) {
            end = std::min(text_.find('\n', end), text_.size() - 1) + 1;
        }
        patches_.push_back({begin, end, {}});
    }

    std::string const &text_;
    std::vector<patch> patches_;
};

} // namespace

comment_notes::comment_notes(value const &root) {
    walk(root, [this](value const &v) {
        std::string raw = raw_comment(*v.object());
        if (raw.empty()) return;
        noted_.emplace(v.object().get(), std::move(raw));
        keep_.push_back(v);
    });
}

std::vector<cObj const *> comment_notes::changed(value const &root) const {
    std::vector<cObj const *> result;
    walk(root, [&](value const &v) {
        cObj const *const object = v.object().get();
        auto const found = noted_.find(object);
        std::string const raw = raw_comment(*object);
        if (found == noted_.end() ? !raw.empty() : found->second != raw) result.push_back(object);
    });
    return result;
}

std::string with_comments(std::string text, value const &root,
                          std::vector<cObj const *> const &changed, options how, value &failed) {
    how.comments = true;
    std::unordered_set<cObj const *> const wanted(changed.begin(), changed.end());
    std::unordered_map<cObj const *, std::string> expected; // by the objects of `root`
    std::string result;
    {
        reading const before(text, how);
        if (!before.good || !before.map.complete()) return {};
        std::unordered_map<std::uint32_t, std::vector<cat::SourceComment>> existing;
        for (cat::SourceComment const &each : before.map.comments())
            if (each.obid != 0) existing[each.obid].push_back(each);
        patched_text patched(text);
        walk_both(root, before.root, [&](value const &v, value const &read) {
            bool const is_wanted = wanted.contains(v.object().get());
            std::string const comment = (is_wanted ? v : read).comment();
            expected.emplace(v.object().get(), comment);
            if (!is_wanted || comment == read.comment()) return;
            auto const entries = before.map.written(*read.object());
            auto const &present = existing[read.object()->obid()];
            if (entries.empty() || // a constant
                !std::ranges::all_of(present, [&](cat::SourceComment const &each) {
                    return each.entry == entries.front().number;
                }))
                failed = v;
            else
                patched.set(present, entries.front(), comment);
        });
        if (!failed.is_nil()) return {};
        result = patched.result();
    }
    reading const after(result, how);
    walk_both(root, after.root, [&](value const &v, value const &read) {
        if (read.comment() != expected[v.object().get()]) failed = v;
    });
    return after.good && failed.is_nil() ? result : std::string();
}

} // namespace qrv::detail

// Comments and layout of a value, copies of it, and the paths to it.
//
// The library stores a comment in the member "//", as it is in the text, with its marks.

#include "value/guard.h"
#include "value/place.h"

#include "qrv/core/cobjd.h"
#include "qrv/core/ctypeobj.h"
#include "qrv/text/write/cwriter.h"
#include "qrv/value/items.h"

#include <unordered_set>

namespace qrv {

// --- comments

namespace {

constexpr std::string_view blanks = " \t\r";

std::string_view trimmed(std::string_view text) {
    std::size_t const begin = text.find_first_not_of(blanks);
    if (begin == std::string_view::npos) return {};
    return text.substr(begin, text.find_last_not_of(blanks) - begin + 1);
}

// Removes the first line from the text and returns it.
std::string_view take_line(std::string_view &text) {
    std::size_t const end = std::min(text.find('\n'), text.size());
    std::string_view const line = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    return line;
}

// Splits comments into their lines.
class comment_lines {
  public:
    explicit comment_lines(std::string_view text) {
        while (!text.empty()) add(text);
    }
    std::string const &text() const noexcept { return text_; }

  private:
    // Removes the white space and the comment at the beginning of the text, and adds the comment.
    void add(std::string_view &text) {
        std::size_t const begin = text.find('/');
        if (begin == std::string_view::npos || begin + 1 == text.size()) {
            text = {};
            return;
        }
        bool const is_block = text[begin + 1] == '*';
        text.remove_prefix(begin + 2);
        std::size_t const end = text.find(is_block ? "*/" : "\n");
        std::string_view inside = text.substr(0, end);
        text.remove_prefix(std::min(inside.size() + (is_block ? 2 : 1), text.size()));
        do add_line(trimmed(take_line(inside)));
        while (!inside.empty());
    }
    void add_line(std::string_view line) {
        if (std::exchange(begun_, true)) text_ += '\n';
        text_ += line;
    }

    std::string text_;
    bool begun_ = false;
};

} // namespace

std::string value::comment() const {
    std::string raw;
    if (!object_ || !object_->get_comment(raw)) return {};
    return comment_lines(raw).text();
}

void value::set_comment(std::string_view text) {
    if (!object_) refuse_type(nullptr, {}, "a value that can have a comment");
    std::string raw;
    while (!text.empty()) {
        std::string_view const line = trimmed(take_line(text));
        raw += raw.empty() ? " //" : "\n//";
        if (!line.empty()) (raw += ' ') += line;
    }
    objref const owner = object_;
    detail::guarded(
        [&] { return owner->set_omember("//", raw.empty() ? cat::badfind() : cat::of(raw)); });
}

// --- layout

bool value::one_line() const { return is_container() && *cat::wformat(*object_) == 's'; }

void value::one_line(bool on) {
    if (!is_container()) refuse_type(object_, {}, "a container");
    if (on == one_line()) return;
    objref const owner = object_;
    detail::guarded([&] { return owner->set_omember("wformat", cat::of(on ? "sc" : "wc")); });
}

// --- copies

namespace {

// Copies comments and layout to a copy, which has the same form as the original.
class note_copier {
  public:
    void copy(value const &from, value const &to) {
        detail::refuse_depth();
        if (from.is_nil() || from.is_shared_with(to)) return;
        copy_members(from, to);
        if (!from.is_container() || !seen_.insert(from.object().get()).second) return;
        element_iterator copied = to.begin();
        for (value const &part : from) {
            if (copied == to.end()) return;
            copy(part, *copied);
            ++copied;
        }
    }

  private:
    static void copy_members(value const &from, value const &to) {
        objref const source = from.object();
        if (!source->has_ommap()) return;
        for (char const *const name : {"//", "wformat"})
            if (objref const note = source->omember(std::string(name)); !cObj::is_bad(note))
                to.object()->set_omember(std::string(name), note);
    }

    std::unordered_set<cObj const *> seen_;
};

} // namespace

value value::clone() const {
    objref copy = object_;
    if (!copy) return {};
    detail::guarded([&] { return cat::detach(copy, true); });
    value const result = detail::value_access::share(copy);
    note_copier().copy(*this, result);
    return result;
}

// --- paths

namespace {

class place_search {
  public:
    explicit place_search(value const &wanted) : wanted_(wanted) {}

    void search(value const &container) {
        detail::refuse_depth();
        if (!seen_.insert(container.object().get()).second) return;
        for (auto const &[key, part] : container.items()) {
            std::size_t const length = path_.size();
            detail::append_key(path_, detail::step(key.object()));
            if (part.is_shared_with(wanted_)) found.push_back(path_);
            if (part.is_container()) search(part);
            path_.resize(length);
        }
    }
    std::vector<std::string> found;

  private:
    value const &wanted_;
    std::string path_;
    std::unordered_set<cObj const *> seen_;
};

} // namespace

std::vector<std::string> value::paths_of(value const &other) const {
    place_search search(other);
    if (is_container()) search.search(*this);
    return std::move(search.found);
}

} // namespace qrv

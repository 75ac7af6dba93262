// Wildcards without recursion. Elements before the first choice, a * or {, are matched one by one
// along the text. From there on the pattern is processed from its last element to the first, for
// all positions in the text at once: ends_[t] is the end of a match that begins at t with the
// elements processed so far. Each element computes the new row from the old one in a single pass,
// so the time does not depend on the number of ways to match.
//
//   a simple element   ends_[t] = ends_[t + 1] if it matches the character. If the text ends after
//                      it but the pattern continues, the match fails: ends_[size] is used only when
//                      the end of an alternative is looked up in the row of the part after the }
//   *                  the maximum of ends_[t .. size - 1], or with `first` the first of them that
//                      exists; it must be greater than t
//   }  ,  {            each alternative starts, from the right, with a fresh row; when processed,
//                      its ends are looked up in the row of the part after the }, and the best
//                      is stored

#include "qrv/util/cmatch.h"

#include <algorithm>
#include <climits>
#include <cstddef>
#include <cstring>
#include <numeric>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

namespace {

struct cElement {
    enum cKind { literal, any, set, star, open, comma, close, end };
    cKind kind;
    std::string_view text; // the character of a literal, the characters between the [ ] of a set

    bool is_simple() const { return kind == literal || kind == any || kind == set; }
    bool matches(char c) const;
};

bool is_between(char c, char a, char b) {
    auto const code = [](char character) { return static_cast<signed char>(character); };
    return std::min(code(a), code(b)) <= code(c) && code(c) <= std::max(code(a), code(b));
}

// The next character of a set, after its escape if it has one.
char next_of(std::string_view set, size_t &i) {
    if (set[i] == '\\') ++i; // never the last: the set would not have ended there
    return set[i++];
}

bool is_in(std::string_view set, char c) {
    bool const negated = !set.empty() && set[0] == '!';
    for (size_t i = negated ? 1 : 0; i < set.size();) {
        char const low = next_of(set, i);
        bool const range = i + 1 < set.size() && set[i] == '-';
        char const high = range ? next_of(set, ++i) : low;
        if (is_between(c, low, high)) return !negated;
    }
    return negated;
}

bool cElement::matches(char c) const {
    if (kind == any) return true;
    return kind == literal ? c == text[0] : is_in(text, c);
}

// The ] of the set whose content begins at p; null if it is missing.
char const *end_of_set(char const *p) {
    while (*p != ']') {
        if (*p == '\\') ++p;
        if (*p == 0) return nullptr;
        ++p;
    }
    return p;
}

// Parses the element at p, which must not be at the end, and moves p past it. nullopt for an
// unclosed set.
std::optional<cElement> take_element(char const *&p, size_t depth) {
    char const *const begin = p++;
    std::string_view const itself(begin, 1);
    switch (*begin) {
    case '?':
        return cElement{cElement::any, itself};
    case '*':
        return cElement{cElement::star, itself};
    case '{':
        return cElement{cElement::open, itself};
    case ',':
        return cElement{depth > 0 ? cElement::comma : cElement::literal, itself};
    case '}':
        return cElement{depth > 0 ? cElement::close : cElement::literal, itself};
    case '\\':
        if (*p == 0) return cElement{cElement::end, itself};
        return cElement{cElement::literal, {p++, 1}};
    case '[':
        break;
    default:
        return cElement{cElement::literal, itself};
    }
    char const *const content = p;
    char const *const close = end_of_set(content);
    if (!close) return std::nullopt;
    p = close + 1;
    return cElement{cElement::set, {content, static_cast<size_t>(close - content)}};
}

// Empty if a bracket isn't closed: then nothing matches, since a match needs the whole pattern.
std::vector<cElement> elements_of(char const *pattern) {
    std::vector<cElement> elements;
    size_t depth = 0;
    for (char const *p = pattern; *p;) {
        std::optional<cElement> const element = take_element(p, depth);
        if (!element) return {};
        if (element->kind == cElement::open) ++depth;
        if (element->kind == cElement::close) --depth;
        elements.push_back(*element);
    }
    return depth == 0 ? elements : std::vector<cElement>();
}

// The part of the text that the elements can reach. Without * each simple element matches at most
// one character, and if the text continues after that, its end is never reached.
std::optional<std::string_view> reach_of(std::vector<cElement> const &elements, char const *text) {
    size_t most = 0, length = 0;
    bool far = false;
    for (cElement const &element : elements) {
        most += element.is_simple();
        far = far || element.kind == cElement::star;
    }
    if (far) length = std::strlen(text);
    while (!far && length <= most && text[length]) ++length;
    if (length >= INT_MAX) return std::nullopt;
    return std::string_view(text, length);
}

class cEnds {
  public:
    cEnds(std::string_view text, bool first) : text_(text), first_(first) { begin_pattern(); }
    cEnds(cEnds const &) = delete;
    cEnds &operator=(cEnds const &) = delete;
    ~cEnds() = default;

    // The end of the match that begins at the start of the text; nullopt if it does not match.
    std::optional<int> of(std::vector<cElement> const &elements) {
        for (auto e = elements.rbegin(); e != elements.rend(); ++e) put_in_front(*e);
        return ends_[0] == none ? std::nullopt : std::optional(ends_[0]);
    }

  private:
    using cRow = std::vector<int>;
    static constexpr int none = -1;

    struct cGroup {
        cRow rest; // after the }. Empty if nothing follows: positions then map to themselves
        cRow best; // of the processed alternatives; empty before the first
    };

    void put_in_front(cElement const &element) {
        switch (element.kind) {
        case cElement::star:
            put_star();
            break;
        case cElement::end:
            begin_pattern();
            break;
        case cElement::close:
            groups_.push_back({last_ ? cRow() : std::move(ends_), {}});
            return begin_pattern();
        case cElement::comma:
            end_alternative();
            return begin_pattern();
        case cElement::open:
            end_alternative();
            ends_ = std::move(groups_.back().best);
            groups_.pop_back();
            break;
        default:
            put_simple(element);
        }
        last_ = false;
    }

    // After the last element a match ends at its position.
    void begin_pattern() {
        ends_.resize(text_.size() + 1);
        std::iota(ends_.begin(), ends_.end(), 0);
        last_ = true;
    }

    void put_simple(cElement const &element) {
        size_t const size = text_.size();
        if (!last_) ends_[size] = none; // the text has ended, the pattern has not
        for (size_t t = 0; t < size; ++t)
            ends_[t] = element.matches(text_[t]) ? ends_[t + 1] : none;
        if (element.kind != cElement::any) ends_[size] = none;
    }

    void put_star() {
        int good = none; // the best end for the part after t
        ends_.back() = none;
        for (size_t t = text_.size(); t-- > 0;) {
            int const own = ends_[t];
            bool const best = own > static_cast<int>(t) && (first_ || own > good);
            ends_[t] = best ? own : good;
            if (own != none) good = first_ ? own : std::max(good, own);
        }
    }

    void end_alternative() {
        auto &[rest, best] = groups_.back();
        if (!rest.empty())
            for (int &end : ends_)
                if (end != none) end = rest[static_cast<size_t>(end)];
        if (best.empty()) {
            best = std::move(ends_);
            return;
        }
        for (size_t t = 0; t < best.size(); ++t)
            if (first_ ? ends_[t] != none : ends_[t] > best[t]) best[t] = ends_[t];
    }

    std::string_view text_;
    bool first_;
    cRow ends_;
    bool last_ = true;           // whether the next element is the last of its pattern
    std::vector<cGroup> groups_; // the open groups, innermost last
};

int length(size_t taken) { return taken <= INT_MAX ? static_cast<int>(taken) : 0; }

// Matches a pattern that begins with a choice.
std::optional<int> match_choices(char const *text, char const *pattern, bool first) {
    std::vector<cElement> const elements = elements_of(pattern);
    if (elements.empty()) return std::nullopt;
    std::optional<std::string_view> const reach = reach_of(elements, text);
    return reach ? cEnds(*reach, first).of(elements) : std::nullopt;
}

} // namespace

int cMatch(char const *text, char const *pattern, bool first) {
    if (!text || !pattern) return 0;
    char const *t = text;
    for (char const *p = pattern; *p;) {
        char const *const begin = p;
        std::optional<cElement> const element = take_element(p, 0);
        if (!element) return 0;
        auto const taken = static_cast<size_t>(t - text);
        if (element->kind == cElement::end) break;
        if (!element->is_simple()) {
            std::optional<int> const more = match_choices(t, begin, first);
            return more ? length(taken + static_cast<size_t>(*more)) : 0;
        }
        if (*t == 0) return 0; // only in an empty text, where even ? does not match
        if (!element->matches(*t++)) return 0;
        if (*t == 0 && *p != 0) return 0;
    }
    return length(static_cast<size_t>(t - text));
}

#include "tools/qrv/rules/brackets.h"

#include "tools/qrv/output/lines.h"

#include <algorithm>

namespace {

constexpr size_t most_tries = 20; // each walks over all brackets

char closing(char opening) {
    switch (opening) {
    case '{':
        return '}';
    case '[':
        return ']';
    case '<':
        return '>';
    default:
        return ')';
    }
}

bool is_opening(char bracket) {
    return bracket == '{' || bracket == '[' || bracket == '<' || bracket == '(';
}

class cBrackets {
  public:
    explicit cBrackets(std::string const &bytes)
        : bytes_(bytes), lines_(bytes), all_(cSource(bytes).brackets()) {}

    std::optional<cWrongBracket> wrong() {
        if (match(none, none)) return std::nullopt;
        std::vector<size_t> open;
        for (size_t i = 0; i < all_.size() && tries_ < most_tries; ++i) {
            if (is_opening(all_[i].kind)) {
                open.push_back(i);
                continue;
            }
            if (open.empty()) return std::nullopt;
            size_t const opening = open.back();
            open.pop_back();
            if (closes_an_outer_one(i, opening, open) && match(none, i))
                return cWrongBracket{cWrongBracket::unclosed, all_[opening].place, all_[i].place};
            if (closes_too_early(i, opening) && match(i, none))
                return cWrongBracket{cWrongBracket::surplus, all_[i].place, all_[opening].place};
        }
        return std::nullopt;
    }

  private:
    static constexpr size_t none = static_cast<size_t>(-1);

    size_t indent(size_t i) const {
        size_t const begin = lines_.offset({all_[i].place.line, 1});
        return bytes_.find_first_not_of(" \t", begin) - begin;
    }
    bool begins_line(size_t i) const { return indent(i) + 1 == all_[i].place.column; }

    // A bracket that begins a line, indented like one outside of the last that is open.
    bool closes_an_outer_one(size_t i, size_t last, std::vector<size_t> const &open) const {
        if (!begins_line(i) || indent(last) == indent(i)) return false;
        return std::any_of(open.begin(), open.end(), [&](size_t outer) {
            return indent(outer) == indent(i) && closing(all_[outer].kind) == all_[i].kind;
        });
    }

    // A bracket at the end of a line that is indented further than that of the opening one.
    bool closes_too_early(size_t i, size_t opening) const {
        return !begins_line(i) && all_[opening].place.line < all_[i].place.line &&
               indent(opening) < indent(i);
    }

    // Do all brackets match if one is left out, and another one is closed before `close`?
    bool match(size_t left_out, size_t close) {
        ++tries_;
        std::vector<char> expected;
        for (size_t i = 0; i < all_.size(); ++i) {
            if (i == left_out) continue;
            if (i == close && !expected.empty()) expected.pop_back();
            if (is_opening(all_[i].kind)) {
                expected.push_back(closing(all_[i].kind));
                continue;
            }
            if (expected.empty() || expected.back() != all_[i].kind) return false;
            expected.pop_back();
        }
        return expected.empty();
    }

    std::string const &bytes_;
    cLines const lines_;
    std::vector<cSource::cBracket> const all_;
    size_t tries_ = 0;
};

} // namespace

std::optional<cWrongBracket> wrong_bracket(std::string const &bytes) {
    return cBrackets(bytes).wrong();
}

void place_at_wrong_bracket(std::string const &bytes, std::vector<cMistake> &mistakes) {
    auto const found = std::find_if(mistakes.begin(), mistakes.end(), [](cMistake const &mistake) {
        return mistake.error.end_line != 0;
    });
    if (found == mistakes.end()) return;
    std::optional<cWrongBracket> const wrong = wrong_bracket(bytes);
    if (!wrong) return;
    cat::ReadError &error = found->error;
    cLines const lines(bytes);
    size_t const opening = lines.offset({error.line, error.column});
    bool const is_surplus = wrong->kind == cWrongBracket::surplus;
    if (is_surplus) {
        error.end_line = 0;
        found->notes.push_back({wrong->place, "this bracket closes none that is open"});
        found->notes.push_back(
            {{error.line, error.column}, "it would be expected to close this one"});
    } else {
        // The text of the error is about a bracket of this kind.
        if (bytes[lines.offset(wrong->place)] != bytes[opening]) return;
        error.end_line = wrong->other.line;
        error.end_column = wrong->other.column;
    }
    error.line = wrong->place.line;
    error.column = wrong->place.column;
}

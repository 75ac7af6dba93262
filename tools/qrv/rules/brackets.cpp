#include "tools/qrv/rules/brackets.h"

#include "tools/qrv/output/lines.h"

#include <algorithm>
#include <map>
#include <utility>
#include <vector>

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
    explicit cBrackets(std::string const &bytes) : all_(cSource(bytes).brackets()) {
        cLines const lines(bytes);
        size_t line = 0, indent = 0;
        for (cSource::cBracket const &bracket : all_) {
            if (bracket.place.line != line) {
                line = bracket.place.line;
                size_t const begin = lines.offset({bracket.place.line, 1});
                indent = bytes.find_first_not_of(" \t", begin) - begin;
            }
            indents_.push_back(indent);
        }
    }

    std::optional<cWrongBracket> wrong() {
        if (match(none, none)) return std::nullopt;
        std::vector<size_t> open;
        std::map<cLook, size_t> looks; // of the open ones, each with how many look like that
        for (size_t i = 0; i < all_.size() && tries_ < most_tries; ++i) {
            if (is_opening(all_[i].kind)) {
                open.push_back(i);
                ++looks[look(i)];
                continue;
            }
            if (open.empty()) return std::nullopt;
            size_t const opening = open.back();
            open.pop_back();
            --looks[look(opening)];
            if (closes_an_outer_one(i, opening, looks) && match(none, i))
                return cWrongBracket{cWrongBracket::unclosed, all_[opening].place, all_[i].place};
            if (closes_too_early(i, opening) && match(i, none))
                return cWrongBracket{cWrongBracket::surplus, all_[i].place, all_[opening].place};
        }
        return std::nullopt;
    }

  private:
    static constexpr size_t none = static_cast<size_t>(-1);

    // The indent of its line, and the bracket that closes it.
    using cLook = std::pair<size_t, char>;

    size_t indent(size_t i) const { return indents_[i]; }
    bool begins_line(size_t i) const { return indent(i) + 1 == all_[i].place.column; }
    cLook look(size_t opening) const { return {indent(opening), closing(all_[opening].kind)}; }

    // A bracket that begins a line, indented like one outside of the last that is open.
    bool closes_an_outer_one(size_t i, size_t last, std::map<cLook, size_t> const &looks) const {
        if (!begins_line(i) || indent(last) == indent(i)) return false;
        auto const found = looks.find({indent(i), all_[i].kind});
        return found != looks.end() && found->second > 0;
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

    std::vector<cSource::cBracket> const all_;
    std::vector<size_t> indents_; // of their lines
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

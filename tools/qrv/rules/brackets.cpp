#include "tools/qrv/rules/brackets.h"

#include "qrv/text/scan/cattrscanner.h"
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
        std::map<cLook, size_t> looks; // the looks of open brackets, with their counts
        for (size_t i = 0; i < all_.size() && tries_ < most_tries; ++i) {
            if (cat::is_opening(all_[i].kind)) {
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
            if (closing(all_[opening].kind) != all_[i].kind && match(none, none, i))
                return cWrongBracket{cWrongBracket::mixed_up, all_[opening].place, all_[i].place,
                                     closing(all_[opening].kind)};
        }
        return std::nullopt;
    }

  private:
    static constexpr size_t none = static_cast<size_t>(-1);

    // The look of an opening bracket: the indent of its line, and the bracket that closes it.
    using cLook = std::pair<size_t, char>;

    size_t indent(size_t i) const { return indents_[i]; }
    bool begins_line(size_t i) const { return indent(i) + 1 == all_[i].place.column; }
    cLook look(size_t opening) const { return {indent(opening), closing(all_[opening].kind)}; }

    // Does a bracket that begins a line have the indent of an open bracket outside of the last one?
    bool closes_an_outer_one(size_t i, size_t last, std::map<cLook, size_t> const &looks) const {
        if (!begins_line(i) || indent(last) == indent(i)) return false;
        auto const found = looks.find({indent(i), all_[i].kind});
        return found != looks.end() && found->second > 0;
    }

    // Is the bracket on a line that is indented more than the line of the opening one?
    bool closes_too_early(size_t i, size_t opening) const {
        return all_[opening].place.line < all_[i].place.line && indent(opening) < indent(i);
    }

    // Do all brackets match if `left_out` is ignored, a missing bracket is inserted before `close`,
    // and `any` closes a bracket of any kind?
    bool match(size_t left_out, size_t close, size_t any = none) {
        ++tries_;
        std::vector<char> expected;
        for (size_t i = 0; i < all_.size(); ++i) {
            if (i == left_out) continue;
            if (i == close && !expected.empty()) expected.pop_back();
            if (cat::is_opening(all_[i].kind)) {
                expected.push_back(closing(all_[i].kind));
                continue;
            }
            if (expected.empty() || (i != any && expected.back() != all_[i].kind)) return false;
            expected.pop_back();
        }
        return expected.empty();
    }

    std::vector<cSource::cBracket> const all_;
    std::vector<size_t> indents_; // the indents of their lines
    size_t tries_ = 0;
};

// The advice for text such as vector(...): how a container is written. `close` is its bracket.
char const *how_to_write(char close) {
    return close == ']'   ? "write a vector as [ ... ]"
           : close == '>' ? "write a set as < ... >"
                          : "write a map as { ... }";
}

// Joins all errors that the wrong closing bracket has caused into one mistake about the opening
// bracket: brackets around it that seem unclosed, and errors between both.
void join_at_mixed_up(std::string const &bytes, cWrongBracket const &wrong,
                      std::vector<cMistake> &mistakes) {
    cLines const lines(bytes);
    auto const bracket_at = [&](cPlace place) { return bytes[lines.offset(place)]; };
    auto const is_about_kind = [&](cMistake const &mistake) {
        char const bracket = bracket_at(place_of(mistake.error));
        return is_unclosed(mistake.error) &&
               (bracket == bracket_at(wrong.place) || closing(bracket) == wrong.expected);
    };
    auto const first = std::find_if(mistakes.begin(), mistakes.end(), is_about_kind);
    if (first == mistakes.end()) return;
    cMistake one = std::move(*first);
    std::vector<cMistake> others;
    for (auto each = mistakes.begin(); each != mistakes.end(); ++each) {
        cPlace const place{each->error.line, each->error.column};
        if (each == first)
            continue;
        else if (is_unclosed(each->error) || (wrong.place <= place && place <= wrong.other))
            add_following(one, *each);
        else
            others.push_back(std::move(*each));
    }
    one.error.line = wrong.place.line;
    one.error.column = wrong.place.column;
    one.error.end_line = 0;
    bool const is_typed = bracket_at(wrong.place) == '(' && wrong.expected != ')';
    one.notes.push_back(is_typed
                            ? cNote{wrong.place, how_to_write(wrong.expected)}
                            : cNote{wrong.other, std::string("write ") + wrong.expected +
                                                     " here, and not " + bracket_at(wrong.other)});
    auto const after = std::find_if(others.begin(), others.end(), [&](cMistake const &mistake) {
        return mistake.error.line == 0 || wrong.place < place_of(mistake.error);
    });
    others.insert(after, std::move(one));
    mistakes = std::move(others);
}

} // namespace

std::optional<cWrongBracket> wrong_bracket(std::string const &bytes) {
    return cBrackets(bytes).wrong();
}

void place_at_wrong_bracket(std::string const &bytes, std::vector<cMistake> &mistakes) {
    auto const found = std::find_if(mistakes.begin(), mistakes.end(), [](cMistake const &mistake) {
        return is_unclosed(mistake.error);
    });
    if (found == mistakes.end()) return;
    std::optional<cWrongBracket> const wrong = wrong_bracket(bytes);
    if (!wrong) return;
    if (wrong->kind == cWrongBracket::mixed_up) return join_at_mixed_up(bytes, *wrong, mistakes);
    cat::ReadError &error = found->error;
    cLines const lines(bytes);
    size_t const opening = lines.offset(place_of(error));
    bool const is_surplus = wrong->kind == cWrongBracket::surplus;
    if (is_surplus) {
        error.end_line = 0;
        found->notes.insert(found->notes.end(),
                            {{wrong->place, "this bracket closes none that is open"},
                             {place_of(error), "it would be expected to close this one"}});
    } else {
        // The text of the error is about a bracket of this kind.
        if (bytes[lines.offset(wrong->place)] != bytes[opening]) return;
        error.end_line = wrong->other.line;
        error.end_column = wrong->other.column;
    }
    error.line = wrong->place.line;
    error.column = wrong->place.column;
}

#include "tools/qrv/rules/later.h"

#include "qrv/core/ctypescope.h"
#include "qrv/text/read/cattrscan.h"
#include "tools/qrv/rules/hints.h"

#include <algorithm>
#include <iterator>
#include <set>
#include <sstream>

namespace {

constexpr size_t most_bytes = 1000000;  // limits the bytes that are read again
constexpr unsigned most_readings = 200; // limits the number of these readings

// Is the error independent of the text before it?
bool is_about_text(cat::ErrorKind kind) {
    using enum cat::ErrorKind;
    constexpr cat::ErrorKind kinds[] = {
        read_equals,      read_key_scalar, read_scalar,    read_key_type,     read_no_key,
        read_no_value,    read_token,      read_bad_ident, read_no_delimiter, read_word_end,
        read_ref_bracket, read_constant,   read_separator};
    return std::find(std::begin(kinds), std::end(kinds), kind) != std::end(kinds);
}

// The tokens of the text without comments. For each, around_ has the index of the opening bracket
// around it, and closed_, if it is an opening bracket itself, the index of its closing bracket.
class cLater {
  public:
    explicit cLater(cTextTokens const &tokens) : bytes_(tokens.bytes()), lines_(bytes_) {
        std::vector<size_t> open;
        for (cTextToken const &token : tokens.all()) {
            if (token.code == tkComment) continue;
            size_t const index = tokens_.size();
            if (cat::is_closing(token.code) && !open.empty()) {
                closed_[open.back()] = index;
                open.pop_back();
            }
            tokens_.push_back(token);
            around_.push_back(open.empty() ? none : open.back());
            closed_.push_back(none);
            if (cat::is_opening(token.code)) open.push_back(index);
        }
    }

    // Adds the mistakes that the last one hides, and those that they hide in turn.
    void add(std::vector<cMistake> &mistakes) {
        for (size_t i = mistakes.size() - 1; i < mistakes.size(); ++i) {
            std::vector<cMistake> found = hidden_after(mistakes[i]);
            if (found.empty()) continue;
            cPlace const first = place_of(found.front().error);
            std::erase_if(mistakes[i].following,
                          [&](cat::ReadError const &error) { return first <= place_of(error); });
            std::move(found.begin(), found.end(), std::back_inserter(mistakes));
        }
    }

  private:
    static constexpr size_t none = static_cast<size_t>(-1);

    // The last token that begins at `place` or before; none if there isn't one.
    size_t at(cPlace place) const {
        auto const after = std::upper_bound(
            tokens_.begin(), tokens_.end(), place,
            [](cPlace wanted, cTextToken const &token) { return wanted < token.place; });
        return static_cast<size_t>(after - tokens_.begin()) - 1;
    }

    // The first token after the delimiter of the entry with this token, or the closing bracket of
    // the map.
    size_t after_entry(size_t index, size_t map) const {
        for (; index < closed_[map]; ++index)
            if (around_[index] == map && cat::is_separator(tokens_[index].code)) return index + 1;
        return closed_[map];
    }

    // Is this a round bracket without a type, which does not open a value?
    bool is_surplus(size_t bracket) const {
        return tokens_[bracket].code == '(' &&
               (bracket == 0 || tokens_[bracket - 1].code != tkIdent);
    }

    std::vector<cMistake> hidden_after(cMistake &mistake) {
        size_t last = at(place_of(mistake.error));
        place_at_missing_value(lines_, mistake);
        size_t const index = at(place_of(mistake.error));
        if (mistake.error.line == 0 || index == none || around_[index] == none) return {};
        size_t map = around_[index];
        while (map != none && is_surplus(map)) map = around_[map];
        if (map == none) return {};
        bool const has_entries = tokens_[map].code == '{' || tokens_[map].code == '(';
        if (!has_entries || closed_[map] == none) return {};
        size_t const first = after_entry(index, map);
        for (cat::ReadError const &error : mistake.following)
            last = std::max(last, at(place_of(error)));
        if (first >= closed_[map] || last < first) return {};
        return read(first, after_entry(std::min(last, closed_[map]), map));
    }

    std::vector<cMistake> read(size_t first, size_t end) {
        cTextToken const &begin = tokens_[first];
        size_t const size = tokens_[end].offset - begin.offset;
        if (size > most_bytes - bytes_read_ || readings_ == most_readings) return {};
        bytes_read_ += size;
        ++readings_;
        std::string text = "{";
        text.append(bytes_, begin.offset, size).append("}");
        std::vector<cat::ReadError> const errors = errors_of(text, begin.place);
        std::vector<cMistake> found;
        for (cMistake &mistake : mistakes_of(bytes_, {}, errors)) {
            if (is_unclosed(mistake.error)) return {};
            if (is_about_text(mistake.error.kind)) found.push_back(std::move(mistake));
        }
        return found;
    }

    // The errors of a map with this text, whose first entry begins at `place`.
    static std::vector<cat::ReadError> errors_of(std::string const &text, cPlace place) {
        cat::TypeScope const types;
        cat::ReadReport const report;
        std::istringstream is(text);
        objref value;
        int delimiter = 0;
        cAttrScan scan(is, false);
        scan.reset(0, place.line, place.column - 2); // columns count from 0; the bracket has one
        scan.scan_obj(value, &delimiter);
        return report.entries();
    }

    std::string const &bytes_;
    cLines const lines_;
    std::vector<cTextToken> tokens_;
    std::vector<size_t> around_, closed_;
    size_t bytes_read_ = 0;
    unsigned readings_ = 0;
};

} // namespace

void add_later_mistakes(cTextTokens const &tokens, std::vector<cMistake> &mistakes) {
    if (mistakes.empty()) return;
    std::set<cPlace> known;
    for (cMistake const &mistake : mistakes) known.insert(place_of(mistake.error));
    cLater later(tokens);
    std::vector<cMistake> all;
    for (cMistake &mistake : mistakes) {
        std::vector<cMistake> found{std::move(mistake)};
        later.add(found);
        all.push_back(std::move(found.front()));
        for (auto each = found.begin() + 1; each != found.end(); ++each)
            if (known.insert(place_of(each->error)).second) all.push_back(std::move(*each));
    }
    mistakes = std::move(all);
}

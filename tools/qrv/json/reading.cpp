// The parser calls the converter for each token, so there is no tree, and deep nesting needs no
// call stack. The converter stores the open levels, and skips values that are too deep.
//
// The text is produced twice: once to find all errors and to verify it, before anything is written,
// and once to write it. So neither the tree nor the new text is in memory as a whole.

#include "tools/qrv/json/reading.h"

#include "qrv/core/cobjd.h"
#include "qrv/text/read/cattrscan.h"
#include "tools/qrv/json/mistake.h"
#include "tools/qrv/json/path.h"
#include "tools/qrv/json/places.h"
#include "tools/qrv/json/repetitions.h"
#include "tools/qrv/output/characters.h"
#include "tools/qrv/output/progress.h"

#include <charconv>
#include <nlohmann/json.hpp>
#include <optional>
#include <unordered_map>
#include <utility>
#include <vector>

namespace {

using cJson = nlohmann::json;

constexpr size_t no_offset = std::string::npos;

// A container that is being read.
struct cLevel {
    bool is_map;
    size_t start;                                      // the offset of its bracket
    std::unordered_map<std::string, size_t> keys = {}; // each key and its first offset
    // The entry that is being read:
    std::string key = {};
    int index = 0;
    size_t repeated = no_offset; // the first offset of a repeated key
    size_t before = 0;           // the end of the previous entry
};

// A whole number with fewer digits is in the range of double.
constexpr size_t digits_beyond_double = 309;

// Does the text have `count` consecutive digits?
bool has_row_of_digits(std::string const &bytes, size_t count) {
    for (size_t probe = count - 1; probe < bytes.size(); probe += count) {
        size_t begin = probe + 1, end = probe;
        while (begin > 0 && is_digit(bytes[begin - 1])) --begin;
        while (end < bytes.size() && is_digit(bytes[end])) ++end;
        if (end >= begin + count) return true;
    }
    return false;
}

// The double nearest to a whole number; empty if the number is out of range.
std::optional<double> nearest_double(std::string_view text) {
    double number = 0;
    auto const read = std::from_chars(text.data(), text.data() + text.size(), number);
    return read.ec == std::errc() ? std::optional(number) : std::nullopt;
}

// Does the double have exactly the value of this text, a whole number?
bool is_exact(double number, std::string const &text) {
    char digits[400];
    auto const written =
        std::to_chars(digits, digits + sizeof digits, number, std::chars_format::fixed, 0);
    return std::string_view(digits, static_cast<size_t>(written.ptr - digits)) == text;
}

bool is_whole(std::string_view text) { return text.find_first_of(".eE") == text.npos; }

// The parser stops at a number beyond the range of double. So it gets a copy of the bytes in which
// each such whole number is replaced by 0.000 of the same length; the converter reads the original.
std::string with_numbers_in_range(std::string const &bytes) {
    std::string changed = bytes;
    cJsonPlaces places(bytes);
    for (places.next(); places.start() < bytes.size(); places.next()) {
        std::string_view const token(&bytes[places.start()], places.end() - places.start());
        if (token.size() < digits_beyond_double || token[0] == '"' || !is_whole(token)) continue;
        size_t const digits = places.start() + (token[0] == '-');
        changed.replace(digits, places.end() - digits, places.end() - digits, '0');
        changed[digits + 1] = '.';
    }
    return changed;
}

// The parser's message without its position, and without the token, which may be long.
std::string reason_of(std::string text) {
    text.erase(0, text.find("] ") + 2);
    if (text.starts_with("parse error at")) text.erase(0, text.find(": ") + 2);
    size_t const token = text.find("; last read: '");
    if (token == text.npos) return text;
    size_t const rest = text.rfind("; expected");
    return text.substr(0, token) + (rest == text.npos || rest < token ? "" : text.substr(rest));
}

class cConverter : public nlohmann::json_sax<cJson> {
  public:
    cConverter(std::string const &bytes, cJsonPlaces &places, cJsonRules const &rules,
               cMessages &messages, cJsonText &text)
        : bytes_(bytes), rules_(rules), messages_(messages), places_(places), text_(text) {}
    cConverter(cConverter const &) = delete;
    cConverter &operator=(cConverter const &) = delete;

    cRepetitions const &repetitions() const { return repetitions_; }

    bool null() override {
        places_.next();
        return add(nullptr);
    }

    bool boolean(bool value) override {
        places_.next();
        return add(value);
    }

    bool number_integer(number_integer_t value) override { return add_whole(value); }
    bool number_unsigned(number_unsigned_t value) override { return add_whole(value); }

    // The parser passes a whole number of more than 64 bits to this function.
    bool number_float(number_float_t value, string_t const &) override {
        places_.next();
        std::string_view const token(&bytes_[places_.start()], places_.end() - places_.start());
        if (!is_whole(token)) return add(value);
        return add_big(std::string(token), nearest_double(token));
    }

    bool string(string_t &value) override {
        places_.next();
        if (value.find('\0') != std::string::npos)
            return refuse("a string with a character 0 cannot be written");
        return add(value);
    }

    bool binary(binary_t &) override { return false; } // never called for text

    bool start_object(std::size_t) override { return open(true); }
    bool end_object() override { return close(); }
    bool start_array(std::size_t) override { return open(false); }
    bool end_array() override { return close(); }

    bool key(string_t &key) override {
        size_t const before = places_.end();
        places_.next();
        if (too_deep_ > 0) return true;
        cLevel &level = levels_.back();
        level.key = std::move(key);
        level.before = before;
        level.repeated = no_offset;
        if (level.key.find('\0') != std::string::npos)
            report("a key with a character 0 cannot be written");
        else if (auto const [first, is_new] = level.keys.emplace(level.key, places_.start());
                 !is_new)
            repeat(level, first->second);
        text_.key(level.key);
        return true;
    }

    // `position` is the number of characters read so far.
    bool parse_error(std::size_t position, std::string const &,
                     nlohmann::detail::exception const &error) override {
        cJsonMistake mistake = mistake_of(bytes_, places_, position, reason_of(error.what()));
        if (mistake.is_value) mistake.text += at_path(path());
        messages_.error(places_.place(mistake.offset), mistake.text);
        if (!mistake.note.empty()) messages_.note(places_.place(mistake.offset), mistake.note);
        if (mistake.is_unclosed && too_deep_ == 0 && !levels_.empty())
            messages_.note(places_.place(levels_.back().start), levels_.back().is_map
                                                                    ? "this '{' is not closed"
                                                                    : "this '[' is not closed");
        return false;
    }

  private:
    template <class T> bool add_whole(T value) {
        places_.next();
        if (std::in_range<int>(value)) return add(static_cast<int>(value));
        return add_big(std::to_string(value), static_cast<double>(value));
    }

    // Adds a whole number that is not an int.
    bool add_big(std::string const &text, std::optional<double> nearest) {
        using cBig = cJsonRules::cBig;
        if (nearest && (rules_.big == cBig::nearest_double || is_exact(*nearest, text)))
            return add(*nearest);
        if (rules_.big == cBig::string) return add(text);
        return refuse("the number " + shortened(text, 60) + " fits neither int nor double",
                      nearest ? "; use --big=double or --big=string" : "; use --big=string");
    }

    bool add(cScalar const &value) {
        if (too_deep_ > 0) return true;
        text_.value(value);
        return end_entry();
    }

    bool end_entry() {
        if (levels_.empty()) return true;
        cLevel &level = levels_.back();
        if (level.repeated != no_offset)
            repetitions_.add(level.repeated, level.before, places_.end());
        ++level.index;
        return text_.is_wanted();
    }

    bool open(bool is_map) {
        places_.next();
        if (too_deep_ == 0 && levels_.size() == static_cast<size_t>(cat::max_read_depth))
            report("nesting is deeper than " + std::to_string(cat::max_read_depth));
        else if (too_deep_ == 0) {
            if (is_map)
                text_.open_map();
            else
                text_.open_vector(places_.array_has_lines());
            levels_.push_back({is_map, places_.start()});
            return true;
        }
        ++too_deep_;
        return true;
    }

    bool close() {
        places_.next();
        if (too_deep_ > 0) {
            --too_deep_;
        } else {
            text_.close();
            levels_.pop_back();
        }
        return too_deep_ > 0 || end_entry();
    }

    void repeat(cLevel &level, size_t first) {
        if (rules_.last_wins)
            level.repeated = first;
        else
            report("this key occurs twice in the object", "; use --duplicates=last", first);
    }

    // Reports that the scalar at the current path can't be stored.
    bool refuse(std::string const &why, char const *advice = "") {
        if (too_deep_ > 0) return true;
        report(why, advice);
        return end_entry();
    }

    void report(std::string const &why, char const *advice = "", size_t first = no_offset) {
        if (!messages_.shows_errors()) return messages_.more(1);
        messages_.error(places_.place(places_.start()), why + at_path(path()) + advice);
        if (first != no_offset) messages_.note(lines_.place(first), "it is first here");
    }

    cJsonPath path() const {
        cJsonPath path;
        for (cLevel const &level : levels_)
            path.push_back(level.is_map ? cat::of(level.key) : cat::of(level.index));
        return path;
    }

    std::string const &bytes_;
    cJsonRules const &rules_;
    cMessages &messages_;
    cJsonPlaces &places_;
    cLines const lines_{bytes_};
    cJsonText &text_;
    cRepetitions repetitions_;
    std::vector<cLevel> levels_;
    size_t too_deep_ = 0; // the number of skipped levels
};

} // namespace

cJsonFile::cJsonFile(std::string &bytes, cJsonRules const &rules, cMessages &messages)
    : bytes_(std::move(bytes)), rules_(rules) {
    cRepetitions const repetitions = check(messages);
    if (!is_good_ || repetitions.empty()) return;
    bytes_ = repetitions.removed_from(bytes_);
    check(messages);
}

cRepetitions cJsonFile::check(cMessages &messages) {
    size_t const before = messages.count();
    cProgress progress(messages.name(), bytes_.size());
    cValuePrint read;
    size_ = 0;
    in_range_.clear();
    if (has_row_of_digits(bytes_, digits_beyond_double)) in_range_ = with_numbers_in_range(bytes_);
    cConverted const converted = convert(messages, [&](std::string_view piece, size_t bytes) {
        progress.add(bytes);
        size_ += piece.size();
        if (messages.count() == before) read.add_text(piece);
        return true;
    });
    if (messages.count() == before && read != converted.given)
        messages.error("not written: the new text would be read as another value");
    is_good_ = messages.count() == before;
    return converted.repetitions;
}

bool cJsonFile::write(cPutPiece const &put) const {
    cMessages known("", 1); // check() has reported them
    bool done = true;
    convert(known, [&](std::string_view piece, size_t) { return done = put(piece); });
    return done;
}

cJsonFile::cConverted cJsonFile::convert(cMessages &messages, cPut const &put) const {
    cJsonPlaces places(bytes_);
    size_t done = 0;
    cJsonText text([&](std::string_view piece) {
        size_t const before = std::exchange(done, places.end());
        return put(piece, done - before);
    });
    cConverter converter(bytes_, places, rules_, messages, text);
    std::string const &parsed = in_range_.empty() ? bytes_ : in_range_;
    size_t const zero = bytes_.find('\0'); // ends the text for the parser
    if (cJson::sax_parse(parsed.begin(), parsed.end(), &converter) && zero != bytes_.npos)
        messages.error(cJsonPlaces(bytes_).place(zero), "a character 0 follows the value");
    text.end();
    return {text.given(), converter.repetitions()};
}

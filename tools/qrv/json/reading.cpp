// The parser calls the builder for each token, so that neither holds a second tree and no depth
// takes stack. The levels that are open are a stack; what stands too deep is passed over.

#include "tools/qrv/json/reading.h"

#include "qrv/containers/cmapobj.h"
#include "qrv/containers/cvectorobj.h"
#include "qrv/core/cobjd.h"
#include "qrv/text/read/cattrscan.h"
#include "tools/qrv/json/path.h"
#include "tools/qrv/json/places.h"

#include <charconv>
#include <nlohmann/json.hpp>
#include <optional>
#include <utility>
#include <vector>

namespace {

using cJson = nlohmann::json;

// A container that is being read.
struct cLevel {
    cRef<cMapObj> container;
    bool is_map;
    bool has_lines = false; // an entry that spans lines
    // The entry that is being read:
    std::string key = {};
    int index = 0;
    bool refused = false; // it can't be stored
};

// All whole numbers with fewer digits are in the range of double.
constexpr size_t digits_beyond_double = 309;

bool is_digit(char c) { return c >= '0' && c <= '9'; }

// Are there so many digits in a row?
bool has_row_of_digits(std::string const &bytes, size_t count) {
    for (size_t probe = count - 1; probe < bytes.size(); probe += count) {
        size_t begin = probe + 1, end = probe;
        while (begin > 0 && is_digit(bytes[begin - 1])) --begin;
        while (end < bytes.size() && is_digit(bytes[end])) ++end;
        if (end >= begin + count) return true;
    }
    return false;
}

// The nearest double of a whole number; none beyond their range.
std::optional<double> nearest_double(std::string_view text) {
    double number = 0;
    auto const read = std::from_chars(text.data(), text.data() + text.size(), number);
    return read.ec == std::errc() ? std::optional(number) : std::nullopt;
}

// Has the double exactly this value? The text is a whole number.
bool is_exact(double number, std::string const &text) {
    char digits[400];
    auto const written =
        std::to_chars(digits, digits + sizeof digits, number, std::chars_format::fixed, 0);
    return std::string_view(digits, static_cast<size_t>(written.ptr - digits)) == text;
}

bool is_whole(std::string_view text) { return text.find_first_of(".eE") == text.npos; }

// The parser stops at a number beyond the range of double. So it reads a text in which each such
// whole number is replaced by 0.000 of the same length; the builder looks at the original.
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

// The parser's text without its own place, and without the token, which may be long.
std::string reason_of(std::string text) {
    text.erase(0, text.find("] ") + 2);
    if (text.starts_with("parse error at")) text.erase(0, text.find(": ") + 2);
    size_t const token = text.find("; last read: '");
    if (token == text.npos) return text;
    size_t const rest = text.rfind("; expected");
    return text.substr(0, token) + (rest == text.npos || rest < token ? "" : text.substr(rest));
}

class cBuilder : public nlohmann::json_sax<cJson> {
  public:
    cBuilder(std::string const &bytes, cJsonRules const &rules, cMessages &messages)
        : bytes_(bytes), rules_(rules), messages_(messages), places_(bytes),
          one_line_(cat::of("sc")), many_lines_(cat::of("wc")) {}
    cBuilder(cBuilder const &) = delete;
    cBuilder &operator=(cBuilder const &) = delete;

    objref const &value() const { return value_; } // null when nothing was read

    bool null() override {
        places_.next();
        return add(cat::nil());
    }

    bool boolean(bool value) override {
        places_.next();
        return add(cat::of(value));
    }

    bool number_integer(number_integer_t value) override { return add_whole(value); }
    bool number_unsigned(number_unsigned_t value) override { return add_whole(value); }

    // A whole number comes here when it has more than 64 bits.
    bool number_float(number_float_t value, string_t const &) override {
        places_.next();
        std::string_view const token(&bytes_[places_.start()], places_.end() - places_.start());
        if (!is_whole(token)) return add(cat::of(value));
        return add_big(std::string(token), nearest_double(token));
    }

    bool string(string_t &value) override {
        places_.next();
        if (value.find('\0') != std::string::npos)
            return refuse("a string with a character 0 cannot be written");
        bool const has_lines = value.find('\n') != std::string::npos;
        return add(cat::of(value), has_lines);
    }

    bool binary(binary_t &) override { return false; } // not in texts

    bool start_object(std::size_t) override { return open(make<cMapObj>(), true); }
    bool end_object() override { return close(); }
    bool start_array(std::size_t) override { return open(make<cVectorObj>(), false); }
    bool end_array() override { return close(); }

    bool key(string_t &key) override {
        places_.next();
        if (too_deep_ > 0) return true;
        cLevel &level = levels_.back();
        level.key = std::move(key);
        std::string const fault = fault_of_key(level);
        level.refused = !fault.empty();
        if (level.refused) tell(fault);
        return true;
    }

    // The position is the number of characters that were read.
    bool parse_error(std::size_t position, std::string const &,
                     nlohmann::detail::exception const &error) override {
        std::string text = reason_of(error.what());
        bool const invalid = text.find(" - invalid ") != std::string::npos;
        bool const literal = text.find("invalid literal") != std::string::npos;
        size_t const size = bytes_.size();
        size_t const last = std::min(position, literal ? size : size + 1) - 1;
        size_t const at = literal || !invalid ? places_.token_at(last) : last;
        if (text.starts_with("number overflow")) text += at_path(path());
        messages_.error(places_.place(at), text);
        return false;
    }

  private:
    template <class T> bool add_whole(T value) {
        places_.next();
        if (std::in_range<int>(value)) return add(cat::of(static_cast<int>(value)));
        return add_big(std::to_string(value), static_cast<double>(value));
    }

    // A whole number that is not an int.
    bool add_big(std::string const &text, std::optional<double> nearest) {
        using cBig = cJsonRules::cBig;
        if (nearest && (rules_.big == cBig::nearest_double || is_exact(*nearest, text)))
            return add(cat::of(*nearest));
        if (rules_.big == cBig::string) return add(cat::of(text));
        return refuse("the number " + shortened(text, 60) + " fits neither int nor double",
                      nearest ? "; use --big=double or --big=string" : "; use --big=string");
    }

    bool add(objref const &value, bool has_lines = false) {
        if (too_deep_ > 0) return true;
        put(value, has_lines);
        return next_entry();
    }

    void put(objref const &value, bool has_lines) {
        if (levels_.empty()) {
            value_ = value;
            return;
        }
        cLevel &level = levels_.back();
        level.has_lines |= has_lines;
        if (!level.is_map)
            level.container->datamap().vect_append(value);
        else if (!level.refused)
            level.container->datamap().mapitem(level.key, value);
    }

    bool next_entry() {
        if (!levels_.empty()) ++levels_.back().index;
        return true;
    }

    bool open(cRef<cMapObj> const &container, bool is_map) {
        places_.next();
        if (too_deep_ == 0 && levels_.size() == static_cast<size_t>(cat::max_read_depth))
            tell("nesting is deeper than " + std::to_string(cat::max_read_depth));
        else if (too_deep_ == 0) {
            put(container, true);
            levels_.push_back({container, is_map});
            return true;
        }
        ++too_deep_;
        return true;
    }

    bool close() {
        places_.next();
        if (too_deep_ > 0)
            --too_deep_;
        else {
            lay_out(levels_.back());
            levels_.pop_back();
        }
        return too_deep_ > 0 || next_entry();
    }

    void lay_out(cLevel const &level) const {
        if (level.container->size() == 0)
            level.container->set_omember("wformat", one_line_);
        else if (!level.is_map && level.has_lines)
            level.container->set_omember("wformat", many_lines_);
    }

    // The scalar at the current path can't be stored.
    bool refuse(std::string const &why, char const *advice = "") {
        if (too_deep_ > 0) return true;
        tell(why, advice);
        return next_entry();
    }

    void tell(std::string const &why, char const *advice = "") {
        if (messages_.tells_errors())
            messages_.error(places_.place(places_.start()), why + at_path(path()) + advice);
        else
            messages_.more(1);
    }

    std::string fault_of_key(cLevel const &level) const {
        if (level.key.find('\0') != std::string::npos)
            return "a key with a character 0 cannot be written";
        if (!rules_.last_wins && level.container->datamap().find(level.key))
            return "this key occurs twice in the object";
        return "";
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
    cJsonPlaces places_;
    objref const one_line_, many_lines_;
    std::vector<cLevel> levels_;
    size_t too_deep_ = 0; // levels that are passed over
    objref value_;
};

} // namespace

objref read_json(std::string const &bytes, cJsonRules const &rules, cMessages &messages) {
    size_t const before = messages.count();
    cBuilder builder(bytes, rules, messages);
    std::string changed;
    if (has_row_of_digits(bytes, digits_beyond_double)) changed = with_numbers_in_range(bytes);
    std::string const &text = changed.empty() ? bytes : changed;
    size_t const zero = bytes.find('\0'); // to the parser the end of the text
    if (cJson::sax_parse(text.begin(), text.end(), &builder) && zero != bytes.npos)
        messages.error(cJsonPlaces(bytes).place(zero), "a character 0 follows the value");
    return messages.count() == before ? builder.value() : nullptr;
}

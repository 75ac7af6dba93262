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

// Has the double exactly this value? The text is a whole number.
bool is_exact(double number, std::string const &text) {
    char digits[400];
    auto const written =
        std::to_chars(digits, digits + sizeof digits, number, std::chars_format::fixed, 0);
    return std::string_view(digits, static_cast<size_t>(written.ptr - digits)) == text;
}

bool is_whole(std::string const &text) { return text.find_first_of(".eE") == std::string::npos; }

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
    cBuilder(std::string const &bytes, cMessages &messages)
        : messages_(messages), places_(bytes), size_(bytes.size()), one_line_(cat::of("sc")),
          many_lines_(cat::of("wc")) {}
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
    bool number_float(number_float_t value, string_t const &text) override {
        places_.next();
        if (is_whole(text) && !is_exact(value, text)) return refuse_whole(text);
        return add(cat::of(value));
    }

    bool string(string_t &value) override {
        places_.next();
        if (value.find('\0') != std::string::npos)
            return refuse("a string with a character 0 can't be written");
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
        size_t const last = std::min(position, literal ? size_ : size_ + 1) - 1;
        size_t const at = literal || !invalid ? places_.token_at(last) : last;
        if (text.starts_with("number overflow")) text += at_path(path());
        messages_.error(places_.place(at), text);
        return false;
    }

  private:
    template <class T> bool add_whole(T value) {
        places_.next();
        if (std::in_range<int>(value)) return add(cat::of(static_cast<int>(value)));
        std::string const text = std::to_string(value);
        double const number = static_cast<double>(value);
        return is_exact(number, text) ? add(cat::of(number)) : refuse_whole(text);
    }

    bool refuse_whole(std::string const &text) {
        return refuse("the number " + shortened(text, 60) + " fits neither int nor double");
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
    bool refuse(std::string const &why) {
        if (too_deep_ > 0) return true;
        tell(why);
        return next_entry();
    }

    void tell(std::string const &why) {
        if (messages_.tells_errors())
            messages_.error(places_.place(places_.start()), why + at_path(path()));
        else
            messages_.more(1);
    }

    static std::string fault_of_key(cLevel const &level) {
        if (level.key.starts_with('#')) return "a key that begins with '#' can't be written";
        if (level.key.find('\0') != std::string::npos)
            return "a key with a character 0 can't be written";
        if (level.container->datamap().find(level.key)) return "this key stands there twice";
        return "";
    }

    cJsonPath path() const {
        cJsonPath path;
        for (cLevel const &level : levels_)
            path.push_back(level.is_map ? cat::of(level.key) : cat::of(level.index));
        return path;
    }

    cMessages &messages_;
    cJsonPlaces places_;
    size_t const size_;
    objref const one_line_, many_lines_;
    std::vector<cLevel> levels_;
    size_t too_deep_ = 0; // levels that are passed over
    objref value_;
};

} // namespace

objref read_json(std::string const &bytes, cMessages &messages) {
    size_t const before = messages.count();
    cBuilder builder(bytes, messages);
    size_t const zero = bytes.find('\0'); // to the parser the end of the text
    if (cJson::sax_parse(bytes.begin(), bytes.end(), &builder) && zero != bytes.npos)
        messages.error(cJsonPlaces(bytes).place(zero), "a character 0 stands behind the value");
    return messages.count() == before ? builder.value() : nullptr;
}

#include "tests/json/tree.h"

#include "qrv/containers/cmapobj.h"
#include "qrv/containers/cvectorobj.h"
#include "qrv/core/cobjd.h"
#include "qrv/text/read/cattrscan.h"
#include "tools/qrv/output/writing.h"

#include <charconv>
#include <nlohmann/json.hpp>
#include <utility>
#include <vector>

namespace {

using cJson = nlohmann::json;

struct cLevel {
    cRef<cMapObj> container;
    bool is_map;
    bool has_lines = false; // an entry spans several lines
    std::string key = {};
};

class cTree : public nlohmann::json_sax<cJson> {
  public:
    explicit cTree(cJsonRules const &rules) : rules_(rules) {}

    objref const &value() const { return value_; }

    bool null() override { return add(cat::nil()); }
    bool boolean(bool value) override { return add(cat::of(value)); }
    bool number_integer(number_integer_t value) override { return add_whole(value); }
    bool number_unsigned(number_unsigned_t value) override { return add_whole(value); }
    bool number_float(number_float_t value, string_t const &text) override {
        bool const whole = text.find_first_of(".eE") == text.npos;
        return whole ? add_big(text, value) : add(cat::of(value));
    }
    bool string(string_t &value) override {
        if (value.find('\0') != value.npos) return false;
        return add(cat::of(value), value.find('\n') != value.npos);
    }
    bool binary(binary_t &) override { return false; }
    bool start_object(std::size_t) override { return open(make<cMapObj>(), true); }
    bool end_object() override { return close(); }
    bool start_array(std::size_t) override { return open(make<cVectorObj>(), false); }
    bool end_array() override { return close(); }
    bool key(string_t &key) override {
        cLevel &level = levels_.back();
        level.key = key;
        return key.find('\0') == key.npos &&
               (rules_.last_wins || !level.container->datamap().find(key));
    }
    bool parse_error(std::size_t, std::string const &,
                     nlohmann::detail::exception const &) override {
        return false;
    }

  private:
    template <class T> bool add_whole(T value) {
        if (std::in_range<int>(value)) return add(cat::of(static_cast<int>(value)));
        return add_big(std::to_string(value), static_cast<double>(value));
    }

    bool add_big(std::string const &text, double nearest) {
        char digits[400];
        auto const written =
            std::to_chars(digits, digits + sizeof digits, nearest, std::chars_format::fixed, 0);
        bool const exact = text == std::string(digits, written.ptr);
        if (exact || rules_.big == cJsonRules::cBig::nearest_double) return add(cat::of(nearest));
        return rules_.big == cJsonRules::cBig::string && add(cat::of(text));
    }

    bool add(objref const &value, bool has_lines = false) {
        if (levels_.empty()) {
            value_ = value;
            return true;
        }
        cLevel &level = levels_.back();
        level.has_lines |= has_lines;
        if (level.is_map)
            level.container->datamap().mapitem(level.key, value);
        else
            level.container->datamap().vect_append(value);
        return true;
    }

    bool open(cRef<cMapObj> const &container, bool is_map) {
        if (levels_.size() == static_cast<size_t>(cat::max_read_depth)) return false;
        add(container, true);
        levels_.push_back({container, is_map});
        return true;
    }

    bool close() {
        cLevel const &level = levels_.back();
        if (level.container->size() == 0)
            level.container->set_omember("wformat", cat::of("sc"));
        else if (!level.is_map && level.has_lines)
            level.container->set_omember("wformat", cat::of("wc"));
        levels_.pop_back();
        return true;
    }

    cJsonRules const &rules_;
    std::vector<cLevel> levels_;
    objref value_;
};

} // namespace

std::optional<std::string> json_test::text_of_tree(std::string const &json,
                                                   cJsonRules const &rules) {
    cTree tree(rules);
    if (json.find('\0') != json.npos || !cJson::sax_parse(json, &tree)) return std::nullopt;
    cMessages messages("tree", 1);
    std::string const text = written(tree.value(), "", false, messages);
    if (messages.count() > 0) return std::nullopt;
    return without_line_end_blanks(text);
}

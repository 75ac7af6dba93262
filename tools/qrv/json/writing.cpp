#include "tools/qrv/json/writing.h"

#include "qrv/containers/cmapobj.h"
#include "qrv/core/cobjd.h"
#include "qrv/text/write/cexacttext.h"
#include "qrv/text/write/cwriter.h"
#include "qrv/util/cintformat.h"
#include "tools/qrv/json/path.h"
#include "tools/qrv/output/raised.h"

#include <charconv>
#include <cmath>
#include <limits>
#include <nlohmann/json.hpp>
#include <unordered_set>

namespace {

constexpr double fixed_below = 1e16; // larger numbers, and small ones, have an exponent
constexpr double fixed_from = 1e-5;
constexpr double whole_up_to = 9007199254740992.0; // 2^53

// The shortest digits that read as this number of this type.
template <class T> std::string digits(T number) {
    T const size = std::abs(number);
    bool const fixed = size == 0 || (size >= T(fixed_from) && size < T(fixed_below));
    char text[64];
    auto const written =
        std::to_chars(text, text + sizeof text, number,
                      fixed ? std::chars_format::fixed : std::chars_format::scientific);
    return {text, written.ptr};
}

bool beyond_int(double number) {
    return number < std::numeric_limits<int>::min() || number > std::numeric_limits<int>::max();
}

template <class T> std::string number_text(T number, bool integers) {
    std::string const text = digits(number);
    if (text.find_first_of(".e") != std::string::npos) return text;
    bool const whole = integers && std::abs(number) < whole_up_to && text != "-0";
    return whole || (beyond_int(number) && std::abs(number) <= whole_up_to) ? text : text + ".0";
}

template <class T> T const *value_of(cObj const &obj, cTypeObj const &type) {
    if (&obj.type() != &type) return nullptr;
    return static_cast<cObjDR<T> const &>(obj).valptr();
}

class cJsonWriter {
  public:
    cJsonWriter(cJsonForm const &form, cMessages &messages) : form_(form), messages_(messages) {}
    cJsonWriter(cJsonWriter const &) = delete;
    cJsonWriter &operator=(cJsonWriter const &) = delete;

    std::string text(objref const &value) {
        out_.reserve(form_.room);
        put(value, form_.compact);
        return given_up_ ? "" : std::move(out_);
    }

  private:
    // Guard: a shared value is being written again. Values inside it may be shared too, so a short
    // file can become an extremely long text.
    class cCopy {
      public:
        explicit cCopy(cJsonWriter &writer) : writer_(writer) {
            if (writer_.copies_++ == 0) writer_.copy_start_ = writer_.out_.size();
        }
        cCopy(cCopy const &) = delete;
        cCopy &operator=(cCopy const &) = delete;
        ~cCopy() {
            if (--writer_.copies_ == 0) writer_.copied_ += writer_.in_copy();
        }

      private:
        cJsonWriter &writer_;
    };

    void put(objref const &value, bool one_line) {
        if (given_up_) return;
        if (cat::find_const(value)) return put_constant(value);
        bool const shared = value->refs() > 1;
        if (!shared || written_.insert(value.get()).second) return put_own(value, one_line);
        lose("a shared value is written once more");
        cCopy const copy(*this);
        put_own(value, one_line);
        if (copied_ + in_copy() > form_.longest) give_up();
    }

    void put_own(objref const &value, bool one_line) {
        cObj const &obj = *value;
        if (cObj::is_map(value)) return put_container(value, "{}", one_line);
        if (cObj::is_vector(value)) return put_container(value, "[]", one_line);
        if (cObj::is_set(value)) {
            lose("a set becomes an array");
            return put_container(value, "[]", one_line);
        }
        if (auto const *text = value_of<std::string>(obj, cat::type_string()))
            return put_string(*text);
        if (auto const *flag = value_of<bool>(obj, cat::type_bool()))
            return put_text(*flag ? "true" : "false");
        if (auto const *number = value_of<int>(obj, cat::type_int()))
            return put_text(std::to_string(*number));
        if (auto const *number = value_of<double>(obj, cat::type_double()))
            return put_text(number_text(*number, form_.integers));
        if (auto const *number = value_of<float>(obj, cat::type_float())) {
            lose("a float becomes a double");
            return put_text(number_text(*number, form_.integers));
        }
        if (auto const *format = dynamic_cast<cIntFormat const *>(value.get())) {
            lose("an intf becomes an int");
            return put_text(std::to_string(format->value()));
        }
        put_typed(value, one_line);
    }

    // Writes an object of another type: as a map of its attributes, or else its text as a string.
    void put_typed(objref const &value, bool one_line) {
        bool const is_map = dynamic_cast<cMapObj const *>(value.get());
        lose("an object of type '" + shortened(value->type().name()) + "' becomes a " +
             (is_map ? "map" : "string"));
        is_map ? put_container(value, "{}", one_line) : put_string(cat::as_text(value));
    }

    void put_constant(objref const &value) {
        if (value == cat::nil()) return put_text("null");
        std::string const name = cat::as_text(value);
        bool const is_bool = value == cat::btrue() || value == cat::bfalse();
        lose(name + " becomes " + (is_bool ? name.substr(1) : "a string"));
        is_bool ? put_text(name.substr(1)) : put_string(name);
    }

    void put_container(objref const &value, std::string_view brackets, bool one_line) {
        cAttrHash const &entries = static_cast<cMapObj const &>(*value).datamap();
        bool const named = brackets[0] == '{';
        one_line = one_line || entries.empty() || *cat::wformat(*value) == 's';
        out_ += brackets[0];
        for (cAttrNode const *node = entries.first(); node; node = entries.next(node)) {
            path_.push_back(node->key());
            if (node != entries.first()) out_ += ',';
            begin_entry(one_line, node == entries.first());
            if (named) put_key(entries, node->key());
            put(node->valref(), one_line);
            path_.pop_back();
        }
        if (!one_line) end_line();
        out_ += brackets[1];
    }

    void begin_entry(bool one_line, bool first) {
        if (!one_line)
            end_line();
        else if (!first && !form_.compact)
            out_ += ' ';
    }

    void end_line() {
        out_ += '\n';
        out_.append(path_.size() * static_cast<size_t>(form_.indent), ' ');
    }

    void put_key(cAttrHash const &entries, objref const &key) {
        std::string const text = cat::as_string(key);
        if (&key->type() != &cat::type_string()) {
            lose("a key of type '" + shortened(key->type().name()) + "' becomes a string");
            if (entries.find(text)) fail("two keys would have this text");
        }
        put_string(text);
        out_ += form_.compact ? ":" : ": ";
    }

    void put_string(std::string const &text) {
        try {
            put_text(nlohmann::json(text).dump());
        } catch (nlohmann::json::type_error const &error) {
            std::string const error_text = error.what();
            fail(error_text.substr(error_text.find("] ") + 2));
        }
    }

    void put_text(std::string const &text) { out_ += text; }

    size_t in_copy() const { return out_.size() - copy_start_; }

    void give_up() {
        if (given_up_) return;
        given_up_ = true;
        messages_.error("shared values would make the text too long");
    }

    // Reports lost data in a value when it is written for the first time.
    void lose(std::string const &what) {
        if (copies_ > 0) return;
        messages_.warning(messages_.shows_warnings() ? what + at_path(path_) : "");
    }
    void fail(std::string const &what) {
        if (copies_ > 0) return;
        messages_.error(messages_.shows_errors() ? what + at_path(path_) : "");
    }

    cJsonForm const &form_;
    cMessages &messages_;
    cJsonPath path_;
    std::string out_;
    std::unordered_set<cObj const *> written_; // shared values that were written
    size_t copies_ = 0;                        // copies that are being written, nested
    size_t copy_start_ = 0;                    // the start of the outermost copy
    size_t copied_ = 0;                        // the characters of all earlier copies
    bool given_up_ = false;
};

} // namespace

std::string json_text(objref const &value, cJsonForm const &form, cMessages &messages) {
    cRaisedErrors const unwritten(
        [&](cErr const &error) { messages.error(error.as_string(), error.code()); });
    cat::ExactText const exact;
    return cJsonWriter(form, messages).text(value);
}

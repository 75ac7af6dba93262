// Plain numbers are what a fresh stream gives: ints in decimal, floating numbers with showpoint and
// six digits. "%#.6g" by hand: the exponent X of the number rounded to six digits decides; from -4
// to 5 it is fixed notation with 5 - X digits behind the point, else scientific with five.
//
// An exact number keeps its plain text if that is one token of the same kind with the same bits as
// value. Otherwise it is the shortest text that is: std::to_chars, a point where none stands, and
// "f" behind a float.

#include "text/write/cscalar_text.h"

#include "base/cchars.h"
#include "qrv/text/write/cwriter.h"
#include "text/write/cwriter_exact.h"

#include <bit>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <string_view>
#include <type_traits>

namespace {
// Enough for every form used here: sign, 17 digits, point, exponent; fixed notation is used only
// for small exponents.
using cBuffer = char[64];

// --- tokens ---

size_t digits_at(std::string_view text, size_t at) {
    size_t n = 0;
    while (at + n < text.size() && is_digit(text[at + n])) ++n;
    return n;
}

// A whole floating token without suffix: digits on both sides of the point are optional, but a sign
// needs one behind it, and without a sign one side must have some.
bool is_double_token(std::string_view text) {
    size_t const sign = !text.empty() && (text[0] == '+' || text[0] == '-') ? 1 : 0;
    size_t const before = digits_at(text, sign);
    size_t at = sign + before;
    if (at == text.size() || text[at] != '.') return false;
    size_t const behind = digits_at(text, ++at);
    if (behind == 0 && (sign || before == 0)) return false;
    at += behind;
    if (at == text.size()) return true;
    if (text[at] != 'e' && text[at] != 'E') return false;
    if (++at < text.size() && (text[at] == '+' || text[at] == '-')) ++at;
    size_t const exponent = digits_at(text, at);
    return exponent > 0 && at + exponent == text.size();
}

std::string_view without_plus(std::string_view text) {
    return text.substr(0, 1) == "+" ? text.substr(1) : text;
}

template <class T> bool reads_as(std::string_view text, T value) {
    if constexpr (std::is_same_v<T, float>) {
        if (text.empty() || (text.back() | 0x20) != 'f') return false;
        text.remove_suffix(1);
    }
    if (!is_double_token(text)) return false;
    text = without_plus(text);
    T read = 0;
    auto const result = std::from_chars(text.data(), text.data() + text.size(), read);
    using bits = std::conditional_t<std::is_same_v<T, float>, std::uint32_t, std::uint64_t>;
    return result.ec == std::errc() && std::bit_cast<bits>(read) == std::bit_cast<bits>(value);
}

// Decimal with an optional sign, also with leading zeros, or hexadecimal without a sign.
bool reads_as(std::string_view text, int value) {
    std::int64_t read = 0;
    bool const hex = text.size() > 2 && text[0] == '0' && (text[1] | 0x20) == 'x';
    std::string_view const digits = hex ? text.substr(2) : without_plus(text);
    auto const result =
        std::from_chars(digits.data(), digits.data() + digits.size(), read, hex ? 16 : 10);
    if (result.ec != std::errc() || result.ptr != digits.data() + digits.size()) return false;
    if (hex) return digits[0] != '-' && read == static_cast<std::uint32_t>(value);
    return digits.data() == text.data() ? read == value : digits[0] != '-' && read == value;
}

// --- forms ---

// The exponent in scientific text, which ends in "e", a sign and digits.
int exponent_of(std::string_view scientific) {
    size_t const e = scientific.rfind('e');
    int exponent = 0;
    char const *const first = scientific.data() + e + 2;
    std::from_chars(first, scientific.data() + scientific.size(), exponent);
    return scientific[e + 1] == '-' ? -exponent : exponent;
}

template <class T> void append_shortest(std::string &out, T value) {
    cBuffer buffer;
    auto const result = std::to_chars(buffer, buffer + sizeof buffer, value);
    std::string_view const text(buffer, static_cast<size_t>(result.ptr - buffer));
    size_t const exponent = text.find('e');
    std::string_view const number = text.substr(0, exponent);
    out.append(number);
    if (number.find('.') == std::string_view::npos) out.append(".0");
    if (exponent != std::string_view::npos) out.append(text.substr(exponent));
}

template <class T> void append_exact_floating(std::string &out, std::string const &plain, T value) {
    if (!std::isfinite(value)) return;
    if (reads_as(plain, value)) {
        out += plain;
        return;
    }
    append_shortest(out, value);
    if (std::is_same_v<T, float>) out += 'f';
}

template <class T> bool is_finite(T const *value) { return value && std::isfinite(*value); }

template <class T> void append_form(std::string &out, T value) {
    if (!exact_text()) return append_number(out, value);
    std::string plain;
    append_number(plain, value);
    append_exact(out, plain, value);
}
} // namespace

std::string const *string_of(cObj const &obj) {
    return &obj.type() == &cat::type_string() ? value_of<std::string>(obj) : nullptr;
}

void append_number(std::string &out, int value) {
    cBuffer buffer;
    auto const result = std::to_chars(buffer, buffer + sizeof buffer, value);
    out.append(buffer, result.ptr);
}

void append_number(std::string &out, double value) {
    constexpr int digits = 6;
    cBuffer buffer;
    auto result = std::to_chars(buffer, buffer + sizeof buffer, value,
                                std::chars_format::scientific, digits - 1);
    if (std::isfinite(value)) {
        int const exponent =
            exponent_of(std::string_view(buffer, static_cast<size_t>(result.ptr - buffer)));
        if (exponent >= -4 && exponent < digits) {
            result = std::to_chars(buffer, buffer + sizeof buffer, value, std::chars_format::fixed,
                                   digits - 1 - exponent);
            if (exponent == digits - 1) *result.ptr++ = '.';
        }
    }
    out.append(buffer, result.ptr);
}

void append_number(std::string &out, float value) {
    append_number(out, static_cast<double>(value));
    out += 'f';
}

void append_exact(std::string &out, std::string const &plain, int value) {
    if (reads_as(plain, value))
        out += plain;
    else
        append_number(out, value);
}

void append_exact(std::string &out, std::string const &plain, double value) {
    append_exact_floating(out, plain, value);
}

void append_exact(std::string &out, std::string const &plain, float value) {
    append_exact_floating(out, plain, value);
}

void append_string(std::string &out, std::string const &text, bool exact) {
    std::string form = text;
    bool const bare = cat::escape(form) && !(exact && (text == "true" || text == "false"));
    if (bare) {
        out += form;
        return;
    }
    out += '"';
    for (char const c : form) {
        if (exact && c == '\n') out += '\\';
        out += c;
    }
    out += '"';
}

char const *bool_text(cObj const &obj, bool value) {
    if (&obj == cat::btrue().get()) return "#true";
    if (&obj == cat::bfalse().get()) return "#false";
    return value ? "true" : "false";
}

bool has_token(cObj const &obj) {
    if (writes_by(obj, cat::write_int)) return value_of<int>(obj);
    if (writes_by(obj, cat::write_string)) return value_of<std::string>(obj);
    if (writes_by(obj, cat::write_bool)) return value_of<bool>(obj);
    if (writes_by(obj, cat::write_double)) return is_finite(value_of<double>(obj));
    if (writes_by(obj, cat::write_float)) return is_finite(value_of<float>(obj));
    return true;
}

bool append_scalar(std::string &out, cObj const &obj) {
    if (obj.flags_of(of_exe_member)) return false; // its own `write` may stand there
    if (writes_by(obj, cat::write_string)) {
        std::string const *const value = value_of<std::string>(obj);
        if (value) append_string(out, *value, exact_text());
        return value;
    }
    if (writes_by(obj, cat::write_int)) {
        int const *const value = value_of<int>(obj);
        if (value) append_form(out, *value);
        return value;
    }
    if (writes_by(obj, cat::write_double)) {
        double const *const value = value_of<double>(obj);
        if (value) append_form(out, *value);
        return value;
    }
    if (writes_by(obj, cat::write_float)) {
        float const *const value = value_of<float>(obj);
        if (value) append_form(out, *value);
        return value;
    }
    if (writes_by(obj, cat::write_bool)) {
        bool const *const value = value_of<bool>(obj);
        if (value) out += bool_text(obj, *value);
        return value;
    }
    return false;
}

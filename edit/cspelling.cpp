#include "edit/cspelling.h"

// A literal consists of the style, which a person chose, and the value. If the style is of another
// kind of literal or can't express the new value, the result is the exact written form.

#include "base/platform/cchars.h"
#include "qrv/core/cobjd.h"
#include "qrv/core/ctypes.h"
#include "qrv/text/write/cexacttext.h"
#include "qrv/text/write/cwriter.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>

namespace qrv::edit {
namespace {

bool has(std::string_view text, std::string_view any) {
    return text.find_first_of(any) != std::string_view::npos;
}

template <class T> T const *value_of(objref const &value, cTypeObj const &type) {
    return &value->type() == &type ? &static_cast<cObjDR<T> const &>(*value).val() : nullptr;
}

std::string exact(objref const &value) {
    cat::ExactText const guard;
    return cat::as_text(value);
}

// --- strings ---

std::string quoted(std::string const &text, char quote) {
    std::string result(1, quote);
    for (char const c : text) {
        if (c == quote || c == '\\' || c == '\n') result += '\\';
        result += c;
    }
    return result += quote;
}

std::string spelt_string(std::string const &text, std::string_view like) {
    if (is_word(text) && (like.empty() || is_word(like))) return text;
    return quoted(text, like.starts_with('\'') ? '\'' : '"');
}

// --- whole numbers ---

// As in "0x00FF": keeps the case and the number of digits, or adds digits.
std::string hexadecimal(int value, std::string_view like) {
    std::array<char, 8> buffer{};
    char *const end = std::to_chars(buffer.begin(), buffer.end(), value, 16).ptr;
    std::string digits(buffer.begin(), end);
    if (has(like.substr(2), "ABCDEF"))
        for (char &c : digits) c = static_cast<char>(c >= 'a' ? c - 'a' + 'A' : c);
    size_t const width = std::max(digits.size(), like.size() - 2);
    return std::string(like.substr(0, 2)) + std::string(width - digits.size(), '0') + digits;
}

// As in "+5", "007", "12u".
std::string decimal(int value, std::string_view like) {
    std::string const sign = like.starts_with('+') && value >= 0 ? "+" : value < 0 ? "-" : "";
    std::string digits = std::to_string(value < 0 ? -std::int64_t{value} : std::int64_t{value});
    if (has(like.substr(0, 1), "+-")) like.remove_prefix(1);
    size_t const given =
        static_cast<size_t>(std::find_if_not(like.begin(), like.end(), is_digit) - like.begin());
    if (like.starts_with('0') && given > digits.size())
        digits.insert(0, given - digits.size(), '0');
    bool const unsign = given < like.size() && (like[given] | 0x20) == 'u' && value >= 0;
    return sign + digits + (unsign ? std::string(1, like[given]) : "");
}

// The length of the prefix before the digits of a number in an intf.
size_t prefix_of(std::string_view number) {
    return is_hexadecimal(number) ? 2 : number.size() > 1 && has(number.substr(0, 1), "b0") ? 1 : 0;
}

// As in "intf(0x00A1F3)": keeps leading zeros if the new digits fit.
std::string formatted(std::string text, std::string_view like) {
    cat::Span const number = word_in_brackets(text), given = word_in_brackets(like);
    if (number.empty() || given.empty()) return text;
    std::string_view const digits = std::string_view(text).substr(number.begin, number.size()),
                           before = like.substr(given.begin, given.size());
    size_t const prefix = prefix_of(digits);
    if (prefix == 0 || prefix != prefix_of(before) || digits[0] != before[0]) return text;
    size_t const first = std::min(digits.find_first_not_of('0', prefix), digits.size());
    size_t const width = before.size() - prefix;
    if (before[prefix] != '0' || digits.size() - first > width) return text;
    return text.replace(number.begin + prefix, digits.size() - prefix,
                        std::string(width - (digits.size() - first), '0') +
                            std::string(digits.substr(first)));
}

// --- floating numbers ---

// The style of a number such as "+12.50e-03f".
struct cFloatingStyle {
    explicit cFloatingStyle(std::string_view like) {
        if (like.find_first_not_of("0123456789.+-eEfF") != std::string_view::npos) return;
        plus = like.starts_with('+');
        if (has(like.substr(0, 1), "+-")) like.remove_prefix(1);
        size_t const point = like.find('.');
        if (point == std::string_view::npos ||
            !std::all_of(like.begin(), like.begin() + point, is_digit))
            return;
        known = true;
        whole = point > 0;
        size_t const end = std::min(like.find_first_not_of("0123456789", point + 1), like.size());
        digits = end - point - 1;
        if (has(like, "eE")) exponent = like[like.find_first_of("eE")];
        if (has(like, "fF")) suffix = like.back();
    }
    bool known = false;
    bool plus = false;
    bool whole = true;    // has digits before the point
    size_t digits = 0;    // the number of digits after it
    char exponent = '\0'; // the letter, if there is an exponent
    char suffix = 'f';
};

// The shortest digits in this notation that read as the value.
template <class T> std::string digits_of(T value, std::chars_format format) {
    std::array<char, 400> buffer{};
    auto const end = std::to_chars(buffer.begin(), buffer.end(), value, format).ptr;
    return std::string(buffer.begin(), end);
}

// Adds a point and zeros to "12", "12.5" or "1e+30" until `digits` digits follow the point.
void pad(std::string &number, size_t digits) {
    size_t const end = std::min(number.find('e'), number.size());
    size_t const point = number.find('.');
    size_t const present = point < end ? end - point - 1 : 0;
    std::string zeros(digits > present ? digits - present : 0, '0');
    number.insert(end, (point < end ? "" : ".") + zeros);
}

template <class T>
std::string spelt_floating(objref const &object, T value, std::string_view like) {
    cFloatingStyle style(like);
    double const size = std::fabs(static_cast<double>(value));
    bool const fixed = !style.exponent && (size == 0 || (size >= 1e-6 && size < 1e15));
    if (!style.known || !std::isfinite(value) || !(fixed || style.exponent)) return exact(object);
    std::string number = digits_of(std::fabs(value), fixed ? std::chars_format::fixed
                                                           : std::chars_format::scientific);
    bool const negative = std::signbit(value);
    bool const sign = negative || style.plus;
    // A number with a sign, and one without digits before the point, needs a digit after it.
    pad(number, std::max(style.digits, size_t{sign ? 1u : 0u}));
    if (!style.whole && !sign && number.starts_with("0.") && number.size() > 2) number.erase(0, 1);
    if (size_t const at = number.find('e'); at != std::string::npos) number[at] = style.exponent;
    if (std::is_same_v<T, float>) number += style.suffix;
    return (negative ? "-" : style.plus ? "+" : "") + number;
}

} // namespace

bool is_hexadecimal(std::string_view literal) {
    return literal.size() > 2 && literal[0] == '0' && (literal[1] | 0x20) == 'x';
}

bool is_word(std::string_view text) {
    return text != "true" && text != "false" && cat::is_ident(std::string(text));
}

cat::Span word_in_brackets(std::string_view text) {
    size_t at = text.find('(') + 1;
    if (at == 0) return {};
    auto const pass_blanks = [&] {
        for (;;) {
            at = std::min(text.find_first_not_of(" \t\r\n", at), text.size());
            std::string_view const two = text.substr(at, 2);
            if (two != "/*" && two != "//") return;
            char const *const end = two == "/*" ? "*/" : "\n";
            size_t const found = text.find(end, at + 2);
            at = found == std::string_view::npos ? text.size() : found + (two == "/*" ? 2 : 1);
        }
    };
    pass_blanks();
    size_t const begin = at;
    at = std::min(text.find_first_of(" \t\r\n/(){}[]<>\"';,=#", at), text.size());
    cat::Span const word{static_cast<std::uint32_t>(begin), static_cast<std::uint32_t>(at)};
    pass_blanks();
    return at + 1 == text.size() && text[at] == ')' ? word : cat::Span{};
}

std::string spelt(objref const &value, std::string_view like) {
    if (cat::find_const(value.get())) return exact(value);
    if (auto const *const text = value_of<std::string>(value, cat::type_string()))
        return spelt_string(*text, like);
    if (auto const *const number = value_of<int>(value, cat::type_int()))
        return is_hexadecimal(like) && *number >= 0
                   ? hexadecimal(*number, like)
                   : decimal(*number, is_hexadecimal(like) ? "" : like);
    if (auto const *const number = value_of<double>(value, cat::type_double()))
        return spelt_floating(value, *number, like);
    if (auto const *const number = value_of<float>(value, cat::type_float()))
        return spelt_floating(value, *number, like);
    return value->type().name() == "intf" ? formatted(exact(value), like) : exact(value);
}

} // namespace qrv::edit

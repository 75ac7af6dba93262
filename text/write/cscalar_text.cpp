// Plain numbers equal the output of a fresh stream: ints in decimal, floating-point numbers with
// showpoint and six digits. This file implements "%#.6g": the exponent X of the number rounded to
// six digits decides; from -4 to 5 the notation is fixed with 5 - X digits after the point, else
// scientific with five.
//
// An exact number has its plain text if that is one token of the same kind whose value has the same
// bits. Otherwise it has the shortest such text: std::to_chars, with a point inserted if missing,
// and the suffix "f" for a float.

#include "text/write/cscalar_text.h"

#include "base/platform/cchars.h"
#include "qrv/text/write/cwriter.h"
#include "text/write/cwriter_exact.h"
#include "text/write/cwriter_form.h"

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <string_view>
#include <type_traits>

namespace {
using cBuffer = char[most_number_text];

// --- tokens ---

size_t digits_at(std::string_view text, size_t at) {
    size_t n = 0;
    while (at + n < text.size() && is_digit(text[at + n])) ++n;
    return n;
}

// A complete floating-point token without suffix: digits on both sides of the point are optional,
// but a sign requires one after it, and without a sign one side must have one.
bool is_double_token(std::string_view text) {
    size_t const sign = !text.empty() && (text[0] == '+' || text[0] == '-') ? 1 : 0;
    size_t const before = digits_at(text, sign);
    size_t at = sign + before;
    if (at == text.size() || text[at] != '.') return false;
    size_t const decimals = digits_at(text, ++at);
    if (decimals == 0 && (sign || before == 0)) return false;
    at += decimals;
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

constexpr int digit_count = 6;

// A finite number, rounded to six digits.
struct cRounded {
    bool negative;
    char digits[digit_count];
    int exponent; // of the first digit
};

cRounded rounded(double value) {
    cBuffer buffer; // "d.ddddde+xx"
    auto const end = std::to_chars(buffer, buffer + sizeof buffer, std::fabs(value),
                                   std::chars_format::scientific, digit_count - 1)
                         .ptr;
    cRounded result{std::signbit(value), {buffer[0]}, 0};
    std::copy_n(buffer + 2, digit_count - 1, result.digits + 1);
    std::from_chars(buffer + digit_count + 3, end, result.exponent);
    if (buffer[digit_count + 2] == '-') result.exponent = -result.exponent;
    return result;
}

// The exponent with a sign and at least two digits.
char *put_exponent(char *to, int exponent) {
    *to++ = 'e';
    *to++ = exponent < 0 ? '-' : '+';
    unsigned const size = static_cast<unsigned>(exponent < 0 ? -exponent : exponent);
    if (size < 10) *to++ = '0';
    return std::to_chars(to, to + 3, size).ptr;
}

// In the form "%#.6g".
char *put_rounded(char *to, cRounded const &number) {
    if (number.negative) *to++ = '-';
    char const *from = number.digits, *const end = from + digit_count;
    int const exponent = number.exponent;
    bool const fixed = exponent >= -4 && exponent < digit_count;
    if (fixed && exponent < 0) {
        *to++ = '0';
        *to++ = '.';
        to = std::fill_n(to, -exponent - 1, '0');
    } else {
        int const before = fixed ? exponent + 1 : 1;
        to = std::copy_n(from, before, to);
        from += before;
        *to++ = '.';
    }
    to = std::copy(from, end, to);
    return fixed ? to : put_exponent(to, exponent);
}

// The shortest text with a point that reads as the same number.
template <class T> char *put_shortest(char *to, T value) {
    char *const end = std::to_chars(to, to + most_number_text, value).ptr;
    char *const exponent = std::find(to, end, 'e');
    if (std::find(to, exponent, '.') != exponent) return end;
    std::copy_backward(exponent, end, end + 2);
    exponent[0] = '.';
    exponent[1] = '0';
    return end + 2;
}

template <class T> void append_exact_floating(std::string &out, std::string const &plain, T value) {
    if (!std::isfinite(value)) return;
    if (reads_as(plain, value)) {
        out += plain;
        return;
    }
    cBuffer buffer;
    out.append(buffer, put_shortest(buffer, value));
    if (std::is_same_v<T, float>) out += 'f';
}

// Powers of ten that a T represents exactly.
constexpr double powers_of_ten[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                    1e8,  1e9,  1e10, 1e11, 1e12, 1e13, 1e14, 1e15,
                                    1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};
template <class T> constexpr int exact_powers = std::is_same_v<T, float> ? 10 : 22;

// Whether the plain form is one token that reads as the value. Digits and power are exact numbers,
// so one rounded operation gives the number that the reader would compute.
template <class T> bool survives(cRounded const &number, T value) {
    int const power = number.exponent - (digit_count - 1);
    if (power == 0 && number.negative) return false; // "-123456."
    if (power < -exact_powers<T> || power > exact_powers<T>) {
        cBuffer plain;
        char *end = put_rounded(plain, number);
        if (std::is_same_v<T, float>) *end++ = 'f';
        return reads_as(std::string_view(plain, static_cast<size_t>(end - plain)), value);
    }
    int digits = 0;
    for (char const c : number.digits) digits = digits * 10 + (c - '0');
    T const whole = static_cast<T>(digits);
    T const read = power < 0 ? whole / static_cast<T>(powers_of_ten[-power])
                             : whole * static_cast<T>(powers_of_ten[power]);
    return read == std::fabs(value);
}

template <class T> char *put_exact_floating(char *to, T value) {
    if (!std::isfinite(value)) return to;
    cRounded const number = rounded(static_cast<double>(value));
    to = survives(number, value) ? put_rounded(to, number) : put_shortest(to, value);
    if (std::is_same_v<T, float>) *to++ = 'f';
    return to;
}

template <class T> bool is_finite(T const *value) { return value && std::isfinite(*value); }

template <class T> void append_form(std::string &out, T value) {
    cBuffer buffer;
    out.append(buffer, exact_text() ? put_exact_number(buffer, value) : put_number(buffer, value));
}

// --- strings ---

constexpr unsigned char name_start = 1, name_part = 2, escaped = 4;

constexpr auto char_classes = [] {
    std::array<unsigned char, 256> classes{};
    for (size_t i = 0; i < classes.size(); ++i) {
        char const c = static_cast<char>(i);
        if (is_letter(c)) classes[i] = name_start | name_part;
        if (is_digit(c)) classes[i] = name_part;
        if (c == '"' || c == '\\' || c == '\'') classes[i] = escaped;
    }
    return classes;
}();

unsigned char class_of(char c) { return char_classes[static_cast<unsigned char>(c)]; }
} // namespace

std::string const *string_of(cObj const &obj) {
    return &obj.type() == &cat::type_string() ? value_of<std::string>(obj) : nullptr;
}

char *put_number(char *to, int value) {
    return std::to_chars(to, to + most_number_text, value).ptr;
}

char *put_number(char *to, double value) {
    if (std::isfinite(value)) return put_rounded(to, rounded(value));
    return std::to_chars(to, to + most_number_text, value).ptr;
}

char *put_number(char *to, float value) {
    to = put_number(to, static_cast<double>(value));
    *to++ = 'f';
    return to;
}

char *put_exact_number(char *to, int value) { return put_number(to, value); }
char *put_exact_number(char *to, double value) { return put_exact_floating(to, value); }
char *put_exact_number(char *to, float value) { return put_exact_floating(to, value); }

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

// Like cat::escape, without a copy.
char *put_string(char *to, std::string const &text, bool exact) {
    char const *from = text.data(), *const end = from + text.size();
    char const *at = from;
    if (at != end && (class_of(*at) & name_start))
        while (at != end && (class_of(*at) & name_part)) ++at;
    bool const name = at == end && !text.empty();
    if (name && !(exact && (text == "true" || text == "false"))) return std::copy(from, end, to);
    *to++ = '"';
    to = std::copy(from, at, to);
    for (; at != end; ++at) {
        if ((class_of(*at) & escaped) || (exact && *at == '\n')) *to++ = '\\';
        *to++ = *at;
    }
    *to++ = '"';
    return to;
}

void append_string(std::string &out, std::string const &text, bool exact) {
    size_t const before = out.size();
    out.resize(before + most_string_text(text));
    char *const end = put_string(out.data() + before, text, exact);
    out.resize(static_cast<size_t>(end - out.data()));
}

char const *bool_text(cObj const &obj, bool value) {
    if (&obj == cat::btrue().get()) return "#true";
    if (&obj == cat::bfalse().get()) return "#false";
    return value ? "true" : "false";
}

bool has_token(cObj const &obj) {
    switch (form_of(obj.type())) {
    case cForm::string:
        return value_of<std::string>(obj);
    case cForm::integer:
        return value_of<int>(obj);
    case cForm::boolean:
        return value_of<bool>(obj);
    case cForm::dbl:
        return is_finite(value_of<double>(obj));
    case cForm::single:
        return is_finite(value_of<float>(obj));
    default:
        return true;
    }
}

bool append_scalar(std::string &out, cObj const &obj) {
    auto const append = [&out](auto const *value) {
        if (value) append_form(out, *value);
        return value != nullptr;
    };
    switch (form_of(obj)) {
    case cForm::string:
        if (auto const *const value = value_of<std::string>(obj))
            return append_string(out, *value, exact_text()), true;
        return false;
    case cForm::integer:
        return append(value_of<int>(obj));
    case cForm::dbl:
        return append(value_of<double>(obj));
    case cForm::single:
        return append(value_of<float>(obj));
    case cForm::boolean:
        if (auto const *const value = value_of<bool>(obj))
            return out += bool_text(obj, *value), true;
        return false;
    default:
        return false;
    }
}

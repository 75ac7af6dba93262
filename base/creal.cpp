// How far the number reaches is found by hand, then std::from_chars converts exactly that. It
// answers alike for too large and too small numbers; the place of the first digit that isn't zero,
// relative to the point and the exponent, tells them apart.

#include "base/creal.h"

#include "base/cchars.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <limits>

namespace {
constexpr std::int64_t far_away = 1'000'000'000'000; // an exponent beyond all floats and all texts

bool is_hex_digit(char c) noexcept {
    return is_digit(c) || ((c | 0x20) >= 'a' && (c | 0x20) <= 'f');
}

bool is_blank(char c) noexcept { return is_white(c) || c == '\v' || c == '\f'; }

char lower(char c) noexcept { return c >= 'A' && c <= 'Z' ? static_cast<char>(c | 0x20) : c; }

bool starts_with_word(std::string_view text, std::string_view word) noexcept {
    return text.size() >= word.size() && std::equal(word.begin(), word.end(), text.begin(),
                                                    [](char w, char c) { return w == lower(c); });
}

bool take_sign(std::string_view &text) noexcept {
    bool const negative = !text.empty() && text.front() == '-';
    if (negative || (!text.empty() && text.front() == '+')) text.remove_prefix(1);
    return negative;
}

// The pieces of a number: digits with at most one point, and the exponent, without its letter.
struct cParts {
    std::string_view digits;
    std::int64_t exponent = 0;
};

std::int64_t read_exponent(std::string_view text) noexcept {
    bool const negative = take_sign(text);
    std::int64_t exponent = 0;
    for (char const c : text) {
        if (!is_digit(c)) break;
        exponent = std::min(exponent * 10 + (c - '0'), far_away);
    }
    return negative ? -exponent : exponent;
}

// False if there is no digit.
template <class Test>
bool split(std::string_view text, Test is_one, char mark, cParts &parts) noexcept {
    size_t end = 0;
    size_t count = 0;
    for (bool point = false; end < text.size(); ++end) {
        if (is_one(text[end]))
            ++count;
        else if (text[end] == '.' && !point)
            point = true;
        else
            break;
    }
    if (count == 0) return false;
    parts.digits = text.substr(0, end);
    if (end < text.size() && lower(text[end]) == mark)
        parts.exponent = read_exponent(text.substr(end + 1));
    return true;
}

// How many digits stand between the first that isn't zero and the point; below 0 behind it.
std::int64_t place_of(std::string_view digits) noexcept {
    size_t const first = digits.find_first_not_of("0.");
    size_t const point = std::min(digits.find('.'), digits.size());
    if (first == std::string_view::npos) return -far_away;
    return static_cast<std::int64_t>(point) - static_cast<std::int64_t>(first);
}

// The text is the number and its exponent; order is above 0 for large numbers.
float convert(std::string_view text, std::chars_format form, std::int64_t order) noexcept {
    float number = 0;
    auto const result = std::from_chars(text.data(), text.data() + text.size(), number, form);
    if (result.ec != std::errc::result_out_of_range) return number;
    return order > 0 ? std::numeric_limits<float>::infinity() : 0.0F;
}

bool scan_hex(std::string_view text, float &number) noexcept {
    cParts parts;
    if (!split(text, is_hex_digit, 'p', parts)) return false;
    number = convert(text, std::chars_format::hex, 4 * place_of(parts.digits) + parts.exponent);
    return true;
}

bool scan_decimal(std::string_view text, float &number) noexcept {
    cParts parts;
    if (!split(text, is_digit, 'e', parts)) return false;
    number = convert(text, std::chars_format::general, place_of(parts.digits) + parts.exponent);
    return true;
}

bool scan_magnitude(std::string_view text, float &number) noexcept {
    if (starts_with_word(text, "inf")) {
        // The longer word is begun, so it must be there.
        if (starts_with_word(text, "infi") && !starts_with_word(text, "infinity")) return false;
        number = std::numeric_limits<float>::infinity();
        return true;
    }
    if (starts_with_word(text, "nan")) {
        number = std::numeric_limits<float>::quiet_NaN();
        return true;
    }
    if (starts_with_word(text, "0x")) return scan_hex(text.substr(2), number);
    return scan_decimal(text, number);
}
} // namespace

bool scan_real(std::string_view text, float &number) noexcept {
    while (!text.empty() && is_blank(text.front())) text.remove_prefix(1);
    bool const negative = take_sign(text);
    float magnitude = 0;
    if (!scan_magnitude(text, magnitude)) return false;
    number = negative ? -magnitude : magnitude;
    return true;
}

#include "base/creader_number.h"

// std::from_chars does the conversion. It knows no leading plus, takes "inf" and "nan", which are
// no numbers here, and answers alike for too large and too small numbers; both are told apart by
// the place of the first digit that isn't zero, relative to the point and the exponent.

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>

namespace {
bool is_digit(char c) noexcept { return c >= '0' && c <= '9'; }

void skip_blanks(std::string_view &text) noexcept {
    while (!text.empty() && (text.front() == ' ' || (text.front() >= '\t' && text.front() <= '\r')))
        text.remove_prefix(1);
}

bool take_sign(std::string_view &text) noexcept {
    bool const negative = !text.empty() && text.front() == '-';
    if (negative || (!text.empty() && text.front() == '+')) text.remove_prefix(1);
    return negative;
}

template <class T> bool parse_digits(std::string_view text, T &number, int base) noexcept {
    auto const end = std::from_chars(text.data(), text.data() + text.size(), number, base);
    return end.ec == std::errc();
}

// At least one digit in front; the sign is passed separately.
bool parse_magnitude(std::string_view text, bool negative, std::int64_t limit,
                     std::int64_t &number) noexcept {
    if (text.empty() || !is_digit(text.front())) return false;
    if (!parse_digits(text, number, 10) || number > limit) return false;
    if (negative) number = -number;
    return true;
}

bool parse_hex(std::string_view digits, int &number) noexcept {
    std::uint32_t bits = 0;
    if (digits.empty() || digits.front() == '-' || !parse_digits(digits, bits, 16)) return false;
    number = static_cast<int>(bits);
    return true;
}

// Decimal exponent of the first digit that isn't zero; for a number out of range its sign tells
// which way.
std::int64_t magnitude_of(std::string_view text) noexcept {
    constexpr std::int64_t far = 1'000'000'000'000;
    std::string_view const digits = text.substr(0, text.find_first_not_of("0123456789."));
    size_t const first = digits.find_first_not_of("0.");
    if (first == std::string_view::npos) return -far; // zero, whatever the exponent
    size_t const point = std::min(digits.find('.'), digits.size());
    std::int64_t const place = first < point ? static_cast<std::int64_t>(point - first) - 1
                                             : -static_cast<std::int64_t>(first - point);
    text.remove_prefix(digits.size());
    if (text.empty() || (text.front() != 'e' && text.front() != 'E')) return place;
    text.remove_prefix(1);
    bool const negative = take_sign(text);
    std::int64_t exponent = far;
    if (!parse_digits(text, exponent, 10) || exponent > far) exponent = far;
    return place + (negative ? -exponent : exponent);
}

template <class T> bool parse_real(std::string_view text, T &number) noexcept {
    skip_blanks(text);
    bool const negative = take_sign(text);
    if (text.empty() || !(is_digit(text.front()) || text.front() == '.')) return false;
    T magnitude{};
    auto const end = std::from_chars(text.data(), text.data() + text.size(), magnitude);
    if (end.ec == std::errc::invalid_argument) return false;
    if (end.ec == std::errc::result_out_of_range) {
        if (magnitude_of(text) > 0) return false;
        magnitude = 0;
    }
    if (std::isinf(magnitude)) return false;
    number = negative ? -magnitude : magnitude;
    return true;
}
} // namespace

bool cat::parse_int(std::string_view text, int &number) noexcept {
    skip_blanks(text);
    if (!text.empty() && text.front() == '0') {
        text.remove_prefix(1);
        if (!text.empty() && (text.front() == 'x' || text.front() == 'X'))
            return parse_hex(text.substr(1), number);
        if (text.empty() || !is_digit(text.front())) {
            number = 0;
            return true;
        }
    }
    bool const negative = take_sign(text);
    std::int64_t wide = 0;
    if (!parse_magnitude(text, negative, negative ? 2147483648 : 2147483647, wide)) return false;
    number = static_cast<int>(wide);
    return true;
}

bool cat::parse_unsigned(std::string_view text, int &number) noexcept {
    skip_blanks(text);
    bool const negative = take_sign(text);
    std::int64_t wide = 0;
    if (!parse_magnitude(text, negative, 4294967295, wide)) return false;
    number = static_cast<int>(static_cast<std::uint32_t>(wide));
    return true;
}

bool cat::parse_float(std::string_view text, float &number) noexcept {
    return parse_real(text, number);
}

bool cat::parse_double(std::string_view text, double &number) noexcept {
    return parse_real(text, number);
}

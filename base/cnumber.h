#pragma once
// Parses a number at the start of a string, independent of the locale. White space and a sign may
// precede it; the rest of the string is ignored. Without a number the result is false and `number`
// is unchanged.

#include <string_view>

namespace cat {

// These follow the token rules and also return false if the number does not fit. Decimal, or
// hexadecimal after 0x: up to 8 significant digits, whose bits become the int. A leading zero means
// decimal, not octal.
bool parse_int(std::string_view text, int &number) noexcept;
// Decimal up to 32 bits, whose bits become the int. A minus sign negates the bits.
bool parse_unsigned(std::string_view text, int &number) noexcept;
// Too large numbers fail; too small ones become the nearest number that T can hold.
bool parse_float(std::string_view text, float &number) noexcept;
bool parse_double(std::string_view text, double &number) noexcept;

// Accepts what people write: also hexadecimal after 0x, inf, infinity and nan. Too large numbers
// become infinite, too small ones 0, each with its sign.
bool scan_real(std::string_view text, float &number) noexcept;

} // namespace cat

#pragma once
// Parses a number at the start of a string, independent of the locale. White space and a sign may
// precede it; the rest of the string is ignored. Without a number the result is false and `number`
// is unchanged.

#include <string_view>

namespace cat {

// The functions parse_... follow the token rules. They also return false if the number does not
// fit.

// Decimal, also with a leading zero; or hexadecimal after 0x, with up to 8 significant digits,
// whose bits become the int. No sign may precede 0x: "-0x10" is 0.
bool parse_int(std::string_view text, int &number) noexcept;
// Decimal up to 32 bits, whose bits become the int. A minus sign negates the bits.
bool parse_unsigned(std::string_view text, int &number) noexcept;
// Too small numbers become the nearest number that the type can hold.
bool parse_float(std::string_view text, float &number) noexcept;
bool parse_double(std::string_view text, double &number) noexcept;

// Accepts what people write: also hexadecimal after 0x, inf, infinity and nan. Too large numbers
// become infinite, too small ones 0, each with its sign.
bool scan_real(std::string_view text, float &number) noexcept;

} // namespace cat

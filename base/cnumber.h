#pragma once
// Numbers at the start of a text, without any locale. White space and a sign may come first; what
// follows the number is not looked at. False, and `number` stays, if there is no number.

#include <string_view>

namespace cat {

// As the token rules shape them; false too if the number does not fit.
// Decimal, or hexadecimal after 0x: up to 8 significant digits, whose bits become the int. A
// leading zero means decimal.
bool parse_int(std::string_view text, int &number) noexcept;
// Decimal up to 32 bits, whose bits become the int. A sign negates the bits.
bool parse_unsigned(std::string_view text, int &number) noexcept;
// What is too large fails; what is too small is the nearest number there is.
bool parse_float(std::string_view text, float &number) noexcept;
bool parse_double(std::string_view text, double &number) noexcept;

// As people write them: also hexadecimal after 0x, inf, infinity and nan. What is too large is
// infinite, what is too small 0, each with its sign.
bool scan_real(std::string_view text, float &number) noexcept;

} // namespace cat

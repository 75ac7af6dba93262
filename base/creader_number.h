#pragma once
// Numbers in text, as the token rules shape them, without any locale: leading blanks and a sign are
// allowed, what follows the number is not looked at. False if there is none or it doesn't fit.

#include <string_view>

namespace cat {
// Decimal, or hexadecimal behind 0x: up to 8 significant digits, whose bits land in the int. A
// leading zero means decimal.
bool parse_int(std::string_view text, int &number) noexcept;
// Decimal up to 32 bits, whose bits land in the int. A sign negates the bits.
bool parse_unsigned(std::string_view text, int &number) noexcept;
// What is too large fails; what is too small is the nearest number there is.
bool parse_float(std::string_view text, float &number) noexcept;
bool parse_double(std::string_view text, double &number) noexcept;
} // namespace cat

#pragma once
// A floating number at the start of a text, without any locale: white space, a sign, then digits
// with point and exponent, hexadecimal ones behind 0x, or inf, infinity, nan. What follows isn't
// looked at. Too large is infinite, too small 0, each with its sign. False, and the number stays,
// if there is none.

#include <string_view>

bool scan_real(std::string_view text, float &number) noexcept;

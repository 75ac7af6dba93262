#pragma once
// Numbers in the file names of a series, for files that are read and files that are written.

#include <cstddef>
#include <string>
#include <string_view>

namespace cat {

// Overwrites the characters of `out` from `place` on with the number and the tag, as in a C array:
// the string grows if necessary and never shrinks. If it continues after the tag, writes a NUL
// there.
void put_number(std::string &out, std::size_t place, int number, std::string_view tag);

// Adds one, except at INT_MAX.
void step_number(int &number) noexcept;

} // namespace cat

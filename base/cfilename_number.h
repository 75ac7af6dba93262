#pragma once
// Numbers in the names of a series, for reading and writing.

#include <cstddef>
#include <string>
#include <string_view>

namespace cat {

// Overwrites `out` from `place` on with the number, the tag and a NUL, as in a C array: the string
// grows if necessary and never shrinks.
void put_number(std::string &out, std::size_t place, int number, std::string_view tag);

// Adds one, except at INT_MAX.
void step_number(int &number) noexcept;

} // namespace cat

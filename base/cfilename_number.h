#pragma once
// Numbers in the names of a series, for both directions.

#include <cstddef>
#include <string>
#include <string_view>

namespace cat {

// Writes number, tag and an end mark over `out` from `place` on, like a C string over an array: the
// string grows where it must and never shrinks.
void put_number(std::string &out, std::size_t place, int number, std::string_view tag);

// One more, but never beyond what an int holds.
void step_number(int &number) noexcept;

} // namespace cat

#pragma once
// Numbers as indices: which types of numbers may be used for an int, and the checked conversion.

#include "qrv/ccomp.h"

#include <concepts>
#include <stdexcept>
#include <type_traits>
#include <utility>

// The types of single characters. signed char and unsigned char count as numbers.
template <class T>
concept cCharacter = std::same_as<T, char> || std::same_as<T, wchar_t> ||
    std::same_as<T, char8_t> || std::same_as<T, char16_t> || std::same_as<T, char32_t>;

// The integral types of an index.
template <class T>
concept cIndex = std::integral<T> && !std::same_as<T, bool> && !cCharacter<T>;

// Those that must be converted.
template <class T>
concept cOtherIndex = cIndex<T> && !std::same_as<T, int>;

namespace cat {
// The same number as an int; std::out_of_range if it does not fit.
template <cIndex T> constexpr int as_int(T number) {
    if (!std::in_range<int>(number)) throw std::out_of_range("a number does not fit in an int");
    return static_cast<int>(number);
}
} // namespace cat

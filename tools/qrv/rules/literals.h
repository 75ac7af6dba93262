#pragma once
// Literals whose value is not what they seem to say.

#include <optional>
#include <string>
#include <string_view>

inline bool is_quote(char c) { return c == '"' || c == '\''; }

// The number that the reader stores for an integer of 32 bits, if it differs: -1 for 0xFFFFFFFF.
// Else empty. For integers with more bits the reader reports an error.
std::optional<int> wrapped(std::string_view number);

// Does the scanner read this as an integer? Hexadecimal numbers and those with a u are integers.
bool is_integer(std::string_view text);

// For a decimal integer with leading zeros, such as 007: the integer without them. Else empty.
std::optional<std::string> without_leading_zeros(std::string_view number);

// The position of the first needless \ in a string in quotes, or npos.
size_t needless_escape(std::string_view text);

// The constant that a word without quotes may be meant as, such as "true" or "#nil"; else empty.
std::string_view looks_like(std::string_view word);

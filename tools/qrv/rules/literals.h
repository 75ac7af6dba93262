#pragma once
// Literals that are read as something else than they seem to say.

#include <optional>
#include <string>
#include <string_view>

inline bool is_quote(char c) { return c == '"' || c == '\''; }

// An integer that is stored as another one, since it has more than 31 bits: what is stored. Larger
// ones are errors of the reader.
std::optional<int> wrapped(std::string_view number);

// Is it an integer, as the scanner sees it? Hexadecimal ones and those with a u are.
bool is_integer(std::string_view text);

// An integer such as 007, which is decimal: what it is without its leading zeros. None if it has
// none.
std::optional<std::string> without_leading_zeros(std::string_view number);

// A string in quotes: the position of the first \ that it does not need, or npos.
size_t needless_escape(std::string_view text);

// What a word without quotes may be meant as: "true", "#nil" and so on. Empty if it is just a word.
std::string_view looks_like(std::string_view word);

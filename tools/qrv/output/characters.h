#pragma once
// Character classes of the text format, independent of the locale.

constexpr bool is_digit(char c) { return c >= '0' && c <= '9'; }
constexpr bool is_letter_or_digit(char c) {
    return is_digit(c) || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}
constexpr bool is_blank(char c) { return c == ' ' || c == '\t'; }
constexpr bool is_white(char c) { return is_blank(c) || c == '\n' || c == '\r'; }
constexpr char to_lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c | 0x20) : c; }

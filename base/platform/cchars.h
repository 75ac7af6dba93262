#pragma once
// Character classes of the text format: ASCII, independent of the locale and of the sign of char.

constexpr bool is_digit(char c) noexcept { return c >= '0' && c <= '9'; }
constexpr bool is_hex_digit(char c) noexcept {
    return is_digit(c) || ((c | 0x20) >= 'a' && (c | 0x20) <= 'f');
}
constexpr bool is_letter(char c) noexcept {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_';
}
constexpr bool is_white(char c) noexcept { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; }
// Like is_white, and also vertical tab and form feed.
constexpr bool is_space(char c) noexcept { return c == ' ' || (c >= '\t' && c <= '\r'); }
constexpr char to_lower(char c) noexcept {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c | 0x20) : c;
}

#pragma once
// Text that a terminal shows as it is: what a file or a command line contains must not move the
// cursor, change colours or reverse the direction of writing.

#include <string>
#include <string_view>

// Is the byte in a character of several bytes, and not the first of them?
inline bool continues_character(char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0) == 0x80;
}

// Control characters but tabs, marks that change the direction of writing and bytes that are not
// UTF-8 become "\x1b" or "\u202e". Escaping the result again changes nothing.   O(text)
std::string escaped(std::string_view text);

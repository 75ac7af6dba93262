#pragma once
// Makes text safe for a terminal: the content of a file or a command line must not move the cursor,
// change colours or reverse the direction of writing.

#include <string>
#include <string_view>

// Is this a byte after the first one of a character of several bytes?
inline bool continues_character(char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0) == 0x80;
}

// Replaces control characters except tabs, marks that change the direction of writing, and bytes
// that are not UTF-8, by escapes such as "\x1b" or "\u202e". Escaping the result again changes
// nothing. O(text)
std::string escaped(std::string_view text);

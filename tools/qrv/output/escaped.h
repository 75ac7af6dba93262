#pragma once
// Text that a terminal shows as it is: what a file or a command line contains must not move the
// cursor, change colours or reverse the direction of writing.

#include <string>
#include <string_view>

// Control characters but tabs, marks that change the direction of writing and bytes that are not
// UTF-8 become "\x1b" or "\u202e". Escaping the result again changes nothing.   O(text)
std::string escaped(std::string_view text);

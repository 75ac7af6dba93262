#pragma once
// For strings with numbers that differ between runs.

#include <algorithm>
#include <string>
#include <string_view>

namespace test {

// The string with `shown` in place of each number that follows `before`.
inline std::string hide_numbers(std::string text, std::string_view before, std::string_view shown) {
    for (size_t at = text.find(before); at != std::string::npos; at = text.find(before, at)) {
        at += before.size();
        size_t const end = std::min(text.find_first_not_of("0123456789", at), text.size());
        if (end > at) text.replace(at, end - at, shown);
    }
    return text;
}

} // namespace test

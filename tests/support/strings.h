#pragma once
// Strings made of other strings.

#include <gtest/gtest.h>

#include <string>

namespace test {

inline std::string times(std::string const &text, size_t count) {
    std::string all;
    for (size_t i = 0; i < count; ++i) all += text;
    return all;
}

// The text with `other` in place of its first `part`.
inline std::string with(std::string text, std::string const &part, std::string const &other) {
    size_t const at = text.find(part);
    EXPECT_NE(at, std::string::npos) << part;
    return text.replace(at, part.size(), other);
}

} // namespace test

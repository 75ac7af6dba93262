#pragma once
// The bytes and the modes of files.

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <string>
#include <sys/stat.h>

namespace test {

inline std::string bytes_of(std::string const &path) {
    std::ifstream is(path, std::ios::binary);
    EXPECT_TRUE(is.is_open()) << path;
    return {std::istreambuf_iterator<char>(is), std::istreambuf_iterator<char>()};
}

inline void put(std::string const &path, std::string const &text) {
    std::ofstream os(path, std::ios::binary);
    os << text;
    EXPECT_TRUE(os.flush().good()) << path;
}

// 0 if the file doesn't exist.
inline mode_t mode_of(std::string const &path) {
    struct stat info {};
    return ::stat(path.c_str(), &info) == 0 ? info.st_mode & 07777 : 0;
}

} // namespace test

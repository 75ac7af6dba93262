#pragma once
// For tests that save files: a folder for each, the bytes and modes of its files, and the system's
// calls put back at the end.

#include "tests/support/fixture.h"
#include "tests/support/os_faults.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

namespace save_test {

// A folder of its own for each test.
class cFolder {
  public:
    cFolder() {
        std::string pattern = (std::filesystem::temp_directory_path() / "qrv_save_XXXXXX").string();
        path_ = ::mkdtemp(pattern.data());
    }
    cFolder(cFolder const &) = delete;
    cFolder &operator=(cFolder const &) = delete;
    ~cFolder() {
        ::chmod(path_.c_str(), 0700);
        std::filesystem::remove_all(path_);
    }
    std::string const &path() const { return path_; }
    std::string file(std::string const &name) const { return path_ + "/" + name; }
    // All that lies there, sorted, with blanks between.
    std::string names() const {
        std::vector<std::string> all;
        for (auto const &entry : std::filesystem::directory_iterator(path_))
            all.push_back(entry.path().filename().string());
        std::sort(all.begin(), all.end());
        std::string text;
        for (std::string const &name : all) text += (text.empty() ? "" : " ") + name;
        return text;
    }

  private:
    std::string path_;
};

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

inline mode_t mode_of(std::string const &path) {
    struct stat info {};
    return ::stat(path.c_str(), &info) == 0 ? info.st_mode & 07777 : 0;
}

class SaveTest : public QrvTest {
  protected:
    SaveTest() = default;
    ~SaveTest() override { cat::os = calls_; }

    cFolder folder_;

  private:
    cat::os_calls const calls_ = cat::os;
};

} // namespace save_test

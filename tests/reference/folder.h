#pragma once
// A temporary folder for the files of generated operations. It is the current folder, so that file
// names in messages are the same in every process.

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <system_error>

namespace reference {

class cFolder {
  public:
    cFolder() {
        std::string name = std::filesystem::temp_directory_path() / "reference-XXXXXX";
        if (!mkdtemp(name.data())) throw std::system_error(errno, std::generic_category(), name);
        folder_ = name;
        std::filesystem::current_path(folder_);
    }
    cFolder(cFolder const &) = delete;
    cFolder &operator=(cFolder const &) = delete;
    ~cFolder() {
        std::error_code ignored;
        std::filesystem::current_path(before_, ignored);
        std::filesystem::remove_all(folder_, ignored);
    }

  private:
    std::filesystem::path before_ = std::filesystem::current_path();
    std::filesystem::path folder_;
};

} // namespace reference

#pragma once
// For tests of the message why a program was not found. The message would differ if PATH had a
// folder that the user may not read.

#include <cstdlib>
#include <optional>
#include <string>

namespace dog_test {

// Reduces PATH to the system's folders until the end of the scope.
class cPlainPath {
  public:
    cPlainPath() {
        if (char const *const path = std::getenv("PATH")) before_ = path;
        ::setenv("PATH", "/usr/bin:/bin", 1);
    }
    cPlainPath(cPlainPath const &) = delete;
    cPlainPath &operator=(cPlainPath const &) = delete;
    ~cPlainPath() {
        if (before_)
            ::setenv("PATH", before_->c_str(), 1);
        else
            ::unsetenv("PATH");
    }

  private:
    std::optional<std::string> before_;
};

} // namespace dog_test

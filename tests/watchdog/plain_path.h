#pragma once
// Where a program is searched, as far as a test depends on it: a folder of PATH that the user may
// not read would change the reason why a name isn't found.

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

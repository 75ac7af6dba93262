#pragma once
// Where programs are looked for, as far as a test depends on it: a folder of PATH that the user may
// not look into would change why a name isn't found.

#include <cstdlib>
#include <optional>
#include <string>

namespace dog_test {

// While it lives PATH has the system's folders alone.
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

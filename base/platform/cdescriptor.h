#pragma once
// Owns a file descriptor: the destructor closes it if it is still open.

#include "base/platform/os_calls.h"

#include <cerrno>
#include <string>

namespace cat {

class cDescriptor {
  public:
    cDescriptor() = default;
    cDescriptor(std::string const &path, int flags, mode_t mode = 0666) { open(path, flags, mode); }
    cDescriptor(cDescriptor const &) = delete;
    cDescriptor &operator=(cDescriptor const &) = delete;
    ~cDescriptor() {
        int const error = errno; // the caller may report it
        close();
        errno = error;
    }

    bool open(std::string const &path, int flags, mode_t mode = 0666) {
        close();
        descriptor_ = os.open(path.c_str(), flags | O_CLOEXEC, mode);
        return good();
    }
    bool good() const { return descriptor_ >= 0; }
    int get() const { return descriptor_; }
    bool close() {
        int const descriptor = descriptor_;
        descriptor_ = -1;
        return descriptor >= 0 && os.close(descriptor) == 0;
    }

  private:
    int descriptor_ = -1;
};

} // namespace cat

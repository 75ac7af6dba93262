#pragma once
// Owns a file descriptor and closes it. All descriptors of the watchdog are CLOEXEC, so the
// started program inherits none of them.

#include <unistd.h>
#include <utility>

namespace watchdog {

class cDescriptor {
  public:
    explicit cDescriptor(int number = -1) : number_(number) {}
    cDescriptor(cDescriptor const &) = delete;
    cDescriptor &operator=(cDescriptor const &) = delete;
    cDescriptor(cDescriptor &&other) noexcept : number_(std::exchange(other.number_, -1)) {}
    cDescriptor &operator=(cDescriptor &&other) noexcept {
        std::swap(number_, other.number_);
        return *this;
    }
    ~cDescriptor() {
        if (number_ >= 0) ::close(number_);
    }

    int number() const { return number_; }
    explicit operator bool() const { return number_ >= 0; }

  private:
    int number_;
};

} // namespace watchdog

#pragma once
// A file that is in no folder, and exists as long as its object.

#include <stdexcept>
#include <string>
#include <sys/mman.h>
#include <unistd.h>

namespace test {

// An open file without a name, written and read by its descriptor.
class cMemory {
  public:
    explicit cMemory(std::string const &bytes = {}) : descriptor_(::memfd_create("test", 0)) {
        for (size_t done = 0; done < bytes.size();) {
            ssize_t const count = ::write(descriptor_, bytes.data() + done, bytes.size() - done);
            if (count <= 0) throw std::runtime_error("memfd: write failed");
            done += static_cast<size_t>(count);
        }
        ::lseek(descriptor_, 0, SEEK_SET);
    }
    cMemory(cMemory const &) = delete;
    cMemory &operator=(cMemory const &) = delete;
    ~cMemory() { ::close(descriptor_); }

    int descriptor() const { return descriptor_; }
    std::string name() const { return "/proc/self/fd/" + std::to_string(descriptor_); }
    std::string bytes() const {
        std::string all(static_cast<size_t>(::lseek(descriptor_, 0, SEEK_END)), '\0');
        if (::pread(descriptor_, all.data(), all.size(), 0) != static_cast<ssize_t>(all.size()))
            throw std::runtime_error("memfd: read failed");
        return all;
    }

  private:
    int descriptor_;
};

} // namespace test

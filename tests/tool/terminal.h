#pragma once
// A terminal for tests: the tool writes to one end, and the test reads the other one.

#include <gtest/gtest.h>

#include <fcntl.h>
#include <stdlib.h>
#include <string>
#include <sys/types.h>
#include <unistd.h>

namespace tool_test {

// A terminal that records its output.
class cTerminal {
  public:
    cTerminal() : master_(::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC)) {
        EXPECT_EQ(::grantpt(master_), 0);
        EXPECT_EQ(::unlockpt(master_), 0);
        slave_ = ::open(::ptsname(master_), O_RDWR | O_NOCTTY | O_CLOEXEC);
        EXPECT_GE(slave_, 0);
    }
    cTerminal(cTerminal const &) = delete;
    cTerminal &operator=(cTerminal const &) = delete;
    ~cTerminal() {
        ::close(slave_);
        ::close(master_);
    }

    int descriptor() const { return slave_; }
    // Up to 4,000 characters; the terminal converts a line feed to a carriage return and a line
    // feed. The kernel passes them on some time after they were written: they are complete when a
    // mark that is written after them arrives.
    std::string printed() const {
        constexpr char mark = '\x04';
        EXPECT_EQ(::write(slave_, &mark, 1), 1);
        std::string text;
        while (!text.ends_with(mark)) {
            char piece[4096];
            ssize_t const count = ::read(master_, piece, sizeof piece);
            if (count <= 0) return text;
            text.append(piece, static_cast<size_t>(count));
        }
        text.pop_back();
        return text;
    }

  private:
    int master_, slave_ = -1;
};

} // namespace tool_test

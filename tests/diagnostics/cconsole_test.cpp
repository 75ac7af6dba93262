// The display that writes to a file descriptor.

#include "qrv/diagnostics/cconsole.h"

#include "messages.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <unistd.h>

namespace {

// A pipe. rest() closes its write end and returns all that was written.
class cPipe {
  public:
    cPipe() {
        if (::pipe2(ends_, O_CLOEXEC) != 0) throw std::runtime_error("no pipe");
    }
    cPipe(cPipe const &) = delete;
    cPipe &operator=(cPipe const &) = delete;
    ~cPipe() {
        ::close(ends_[0]);
        if (ends_[1] >= 0) ::close(ends_[1]);
    }

    int input() const { return ends_[1]; }
    std::string rest() {
        ::close(std::exchange(ends_[1], -1));
        std::string text;
        char buffer[256];
        for (ssize_t n = 0; (n = ::read(ends_[0], buffer, sizeof buffer)) > 0;)
            text.append(buffer, static_cast<std::size_t>(n));
        return text;
    }

  private:
    int ends_[2];
};

class Console : public testing::Test {
  protected:
    cPieces messages; // its constructor fires sig_idle, so that no text waits
};

TEST_F(Console, every_piece_is_written_at_once) {
    cPipe pipe;
    cConsoleDisplay const display(pipe.input());
    cat::std_err() << "one ";
    cprintf("%s ", "two");
    cMsgDispOut("50%\n");
    EXPECT_FALSE(display.failed());
    EXPECT_EQ(pipe.rest(), "one two 50%\n");
}

TEST_F(Console, destruction_writes_the_buffered_text_but_no_later_text) {
    cPipe pipe;
    {
        cConsoleDisplay const display(pipe.input());
        cat::std_out() << "waiting";
    }
    cat::std_out() << "too late" << std::flush;
    EXPECT_EQ(pipe.rest(), "waiting");
}

TEST_F(Console, a_long_string_is_written_completely) {
    cPipe pipe;
    cConsoleDisplay const display(pipe.input());
    std::string const text(20000, 'x');
    cat::std_out() << text << std::flush;
    EXPECT_EQ(pipe.rest(), text);
}

TEST_F(Console, a_descriptor_that_cannot_be_written_is_reported) {
    cConsoleDisplay const display(-1);
    cat::std_err() << "text";
    EXPECT_TRUE(display.failed());
    EXPECT_EQ(messages.text(), "text");
}

TEST_F(Console, two_displays_both_write_the_output) {
    cPipe first;
    cPipe second;
    cConsoleDisplay const one(first.input());
    cConsoleDisplay const two(second.input());
    cat::std_err() << "text";
    EXPECT_EQ(first.rest(), "text");
    EXPECT_EQ(second.rest(), "text");
    static_assert(!std::is_copy_constructible_v<cConsoleDisplay>);
}

} // namespace

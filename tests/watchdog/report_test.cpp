// Messages to readers that do not read or read slowly: no line delays the watchdog for long.

#include "tools/watchdog/report.h"

#include "tools/watchdog/descriptor.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <fcntl.h>
#include <string>
#include <termios.h>
#include <thread>
#include <unistd.h>

using watchdog::cDescriptor, watchdog::report;

namespace {

// Redirects standard error until the end of the scope.
class cRedirected {
  public:
    explicit cRedirected(int to) : before_(::dup(STDERR_FILENO)) { ::dup2(to, STDERR_FILENO); }
    cRedirected(cRedirected const &) = delete;
    cRedirected &operator=(cRedirected const &) = delete;
    ~cRedirected() { ::dup2(before_.number(), STDERR_FILENO); }

  private:
    cDescriptor before_;
};

void set_blocking(int descriptor, bool blocking) {
    ASSERT_EQ(::fcntl(descriptor, F_SETFL, blocking ? 0 : O_NONBLOCK), 0);
}

void fill(int descriptor, std::size_t at_once) {
    std::string const much(at_once, 'x');
    set_blocking(descriptor, false);
    while (::write(descriptor, much.data(), much.size()) > 0) {
    }
    set_blocking(descriptor, true);
}

// The longest line: 1,000 characters and the line end.
std::string const text(2000, 'n');
std::string const line = ("qrv-watchdog: " + text).substr(0, 1000) + "\n";

struct cPipe {
    cPipe() {
        int ends[2] = {-1, -1};
        if (::pipe2(ends, O_CLOEXEC) != 0) std::abort();
        reader = cDescriptor(ends[0]);
        writer = cDescriptor(ends[1]);
    }
    cPipe(cPipe const &) = delete;
    cPipe &operator=(cPipe const &) = delete;
    ~cPipe() = default;
    cDescriptor reader, writer;
};

TEST(WatchdogTell, lines_are_truncated_and_separate) {
    cPipe pipe;
    {
        cRedirected const redirected(pipe.writer.number());
        report("a\tb");
        report(text);
    }
    pipe.writer = cDescriptor();
    std::string read(5000, '\0');
    read.resize(static_cast<std::size_t>(::read(pipe.reader.number(), read.data(), read.size())));
    EXPECT_EQ(read, "qrv-watchdog: a?b\n" + line);
}

TEST(WatchdogTell, a_terminal_with_space_for_a_part_of_a_line_delays_nothing) {
    cDescriptor const terminal(::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC));
    ASSERT_TRUE(terminal);
    ASSERT_EQ(::grantpt(terminal.number()), 0);
    ASSERT_EQ(::unlockpt(terminal.number()), 0);
    cDescriptor const screen(::open(::ptsname(terminal.number()), O_RDWR | O_NOCTTY | O_CLOEXEC));
    ASSERT_TRUE(screen);
    fill(screen.number(), 100);
    std::string some(4096, '\0'); // space for less than the lines need
    ASSERT_GT(::read(terminal.number(), some.data(), some.size()), 0);
    cRedirected const redirected(screen.number());
    for (int i = 0; i < 100; ++i) report(text); // does not block
}

// A page becomes free every 100 ms, which is enough for four lines. If the watchdog waited each
// time, it would print all lines and do nothing else for five seconds.
TEST(WatchdogTell, the_watch_dog_waits_once_for_a_slow_reader) {
    std::this_thread::sleep_for(
        std::chrono::milliseconds(1100)); // no earlier test has waited within this time
    cPipe pipe;
    fill(pipe.writer.number(), 4096);
    std::atomic<bool> over = false;
    long lines = 0;
    std::thread reader([&] {
        std::string page(4096, '\0');
        while (ssize_t const count = ::read(pipe.reader.number(), page.data(), page.size())) {
            if (count < 0) break;
            lines += std::count(page.begin(), page.begin() + count, '\n');
            if (!over) std::this_thread::sleep_for(std::chrono::milliseconds(100));
        }
    });
    {
        cRedirected const redirected(pipe.writer.number());
        for (int i = 0; i < 200; ++i) report(text);
    }
    over = true;
    pipe.writer = cDescriptor();
    reader.join();
    EXPECT_GE(lines, 1);
    EXPECT_LT(lines, 100);
}

} // namespace

#include "report.h"

#include <algorithm>
#include <chrono>
#include <csignal>
#include <ctime>
#include <poll.h>
#include <unistd.h>

namespace watchdog {

namespace {

constexpr size_t longest_line = 1000;
constexpr timespec moment{0, 200'000'000};
constexpr std::chrono::seconds between_waits{1};

void nothing(int) {}

// Guard: until the end of the scope, a blocking call fails with EINTR after a moment. The timer
// fires repeatedly, so that it cannot miss a call that begins late.
class cLimit {
  public:
    cLimit() {
        struct sigaction action {};
        action.sa_handler = nothing; // without SA_RESTART
        ::sigaction(SIGRTMIN, &action, nullptr);
        sigset_t set{};
        ::sigemptyset(&set);
        ::sigaddset(&set, SIGRTMIN);
        ::sigprocmask(SIG_UNBLOCK, &set, nullptr);
        sigevent event{};
        event.sigev_notify = SIGEV_SIGNAL;
        event.sigev_signo = SIGRTMIN;
        is_made_ = ::timer_create(CLOCK_MONOTONIC, &event, &timer_) == 0;
        itimerspec const span{moment, moment};
        if (is_made_) ::timer_settime(timer_, 0, &span, nullptr);
    }
    cLimit(cLimit const &) = delete;
    cLimit &operator=(cLimit const &) = delete;
    ~cLimit() {
        if (is_made_) ::timer_delete(timer_);
    }

  private:
    timer_t timer_{};
    bool is_made_ = false;
};

// Room in the pipe does not guarantee that a write succeeds: the program may write to the same
// pipe, and a terminal may have room for only a part. So every write has a time limit. At most one
// write in `between_waits` waits for that long, so even a slow reader does not delay the watch dog.
void put(std::string const &line) {
    static constinit std::chrono::steady_clock::time_point next_wait{};
    pollfd output{STDERR_FILENO, POLLOUT, 0};
    bool const has_room = ::poll(&output, 1, 0) == 1;
    auto const now = std::chrono::steady_clock::now();
    if (!has_room && now < next_wait) return;
    cLimit const limit;
    bool const written = ::write(STDERR_FILENO, line.data(), line.size()) >= 0;
    if (!has_room || !written) next_wait = now + between_waits;
}

} // namespace

void report(std::string const &line) {
    std::string shown = "qrv-watchdog: " + line;
    std::replace_if(
        shown.begin(), shown.end(),
        [](char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7F; }, '?');
    if (shown.size() > longest_line) shown.resize(longest_line);
    put(shown + '\n');
}

} // namespace watchdog

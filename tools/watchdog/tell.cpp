#include "tell.h"

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

// As long as it lives, a call that blocks ends with EINTR after a moment. It does so again and
// again, so that no call begins too late for it.
class cLimit {
  public:
    cLimit() {
        struct sigaction action {};
        action.sa_handler = nothing; // and calls are not taken up again
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

// That there is room is no promise: the program may write to the same pipe, and a terminal may
// have room for a part alone. So no line is written without a limit. Who waits one moment in
// `between_waits` at most is never late for the program, however slow the reader is.
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

void tell(std::string const &line) {
    std::string shown = "qrv-watchdog: " + line;
    std::replace_if(
        shown.begin(), shown.end(),
        [](char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7F; }, '?');
    if (shown.size() > longest_line) shown.resize(longest_line);
    put(shown + '\n');
}

} // namespace watchdog

#pragma once
// Decides when a watched program is ended, started again or left alone. The caller passes all times
// and events to it, so it can be tested without a process, a clock or a wait.
//
//   running --no sign of life--> ending --grace over--> killed --patience over--> given up
//   running --asked to stop----> ending
//   every state but given up --the program ended--> over, or running again
//
// Rules: the start counts as the first sign of life. A sign in another state than running changes
// nothing. After a request to stop, nothing is started again. If the watchdog itself did not run,
// the program may not have run either, so the wait begins anew: after the watchdog was stopped and
// continued, or if it missed a deadline by more than `oversleep`, as after a suspend of the
// machine.

#include <chrono>

namespace watchdog {

using cTime = std::chrono::steady_clock::time_point;
using cSpan = std::chrono::nanoseconds;

// Exit statuses of the watchdog; all others come from the program.
constexpr int status_wrong_usage = 2;
constexpr int status_no_life = 124;      // the program gave no sign of life, and no restart is left
constexpr int status_failure = 125;      // the watchdog itself can't continue
constexpr int status_not_executed = 126; // the program exists but can't be executed
constexpr int status_not_found = 127;
constexpr int status_signal = 128; // plus the number of the signal

struct cRules {
    cSpan timeout = std::chrono::seconds(30);  // between two signs of life
    cSpan grace = std::chrono::seconds(5);     // from SIGTERM to SIGKILL
    cSpan patience = std::chrono::seconds(10); // from SIGKILL until it is given up
    int restarts = 0;
};

constexpr cSpan oversleep = std::chrono::seconds(1);

// How a program ended: by exit with a status, or by a signal.
struct cEnd {
    bool by_signal = false;
    int number = 0;
    int status() const { return by_signal ? status_signal + number : number; }
    bool is_good() const { return !by_signal && number == 0; }
};

class cLife {
  public:
    enum class cStep { none, terminate, kill, give_up };

    explicit cLife(cRules const &rules) : rules_(rules) {}
    cLife(cLife const &) = default;
    cLife &operator=(cLife const &) = default;

    void started(cTime now);
    void sign_of_life(cTime now);
    // The watchdog was asked to end the program and itself, by this signal; the first one counts.
    void stop(int signal, cTime now);
    void slept(cTime now); // the watchdog itself did not run
    // The step that is due now. Call it at deadline(), or at any time before.
    cStep look(cTime now);
    // The program has ended. True if it must be started again; if not, status() is final.
    bool ended(cEnd end);
    // The program can't be started.
    void not_started(int error);

    cTime deadline() const { return deadline_; }
    int status() const { return status_; }
    int restarts() const { return restarts_; } // the number of restarts so far
    bool is_stopping() const { return stop_signal_ != 0; }

  private:
    enum class cState { running, ending, killed, over };

    void enter(cState state, cSpan span, cTime now);
    bool over(int status);

    cRules rules_;
    cState state_ = cState::over;
    cSpan span_{};
    cTime deadline_{};
    bool no_life_ = false;
    int stop_signal_ = 0;
    int restarts_ = 0;
    int status_ = status_failure;
};

} // namespace watchdog

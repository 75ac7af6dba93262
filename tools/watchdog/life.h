#pragma once
// When a watched program is ended, started again or left alone: decided from times and events
// alone, so that it can be tested without a process, a clock or a wait.
//
//   running --no sign of life--> ending --grace over--> killed --patience over--> given up
//   running --asked to stop----> ending
//   every state but given up --the program ended--> over, or running again
//
// Rules: the start counts as the first sign of life. A sign in another state than running changes
// nothing. Who was asked to stop starts nothing again. When the watch dog itself did not run, what
// it waits for had no chance either, so the wait begins anew: it was stopped and goes on, or it
// missed a deadline by more than `oversleep`, as on a machine that stood still.

#include <chrono>

namespace watchdog {

using cTime = std::chrono::steady_clock::time_point;
using cSpan = std::chrono::nanoseconds;

// Exit statuses of the watch dog; each other is the program's.
constexpr int status_wrong_usage = 2;
constexpr int status_no_life = 124;      // ended for lack of a sign of life, and no restart left
constexpr int status_failure = 125;      // the watch dog itself can't go on
constexpr int status_not_executed = 126; // the program is there and can't be executed
constexpr int status_not_found = 127;
constexpr int status_signal = 128; // and the number of the signal

struct cRules {
    cSpan timeout = std::chrono::seconds(30);  // between two signs of life
    cSpan grace = std::chrono::seconds(5);     // from SIGTERM to SIGKILL
    cSpan patience = std::chrono::seconds(10); // from SIGKILL on
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
    // Asked to end the program and itself, by that signal; the first one counts.
    void stop(int signal, cTime now);
    void slept(cTime now); // the watch dog itself
    // What is to be done at this time; to be asked at deadline() and whenever it is liked.
    cStep look(cTime now);
    // The program has ended. True if it is to be started again; if not, status() stands.
    bool ended(cEnd end);
    // The program can't be started.
    void not_started(int error);

    cTime deadline() const { return deadline_; }
    int status() const { return status_; }
    int restarts() const { return restarts_; } // that were asked for until now
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

#pragma once
// The signals that the watchdog receives. They are blocked all the time and read from a
// descriptor, so that the watchdog can wait for signals and messages together.

#include "descriptor.h"

namespace watchdog {

class cSignals {
  public:
    // Blocks SIGCHLD; SIGCONT, which shows that the watchdog was stopped; and those that ask for
    // an end: SIGTERM, and SIGINT and SIGHUP unless our caller ignores them, as nohup does. Ignores
    // SIGPIPE. Throws cFailure.
    cSignals();
    cSignals(cSignals const &) = delete;
    cSignals &operator=(cSignals const &) = delete;

    struct cTaken {
        int number = 0; // 0 if no signal is pending
        // An interrupt by the terminal: the program is in the same group and has received it too.
        // (SIGHUP of a closed terminal goes only to the leader of its session.)
        bool by_terminal = false;
    };
    cTaken take() const;
    int descriptor() const { return descriptor_.number(); }

  private:
    cDescriptor descriptor_;
};

} // namespace watchdog

#pragma once
// The signals that the watch dog is sent, as something to be waited for together with messages:
// they are blocked for the whole of its life and taken from a descriptor.

#include "descriptor.h"

namespace watchdog {

class cSignals {
  public:
    // SIGCHLD, SIGCONT, which tells that we were stopped, and those that ask for an end: SIGTERM,
    // and SIGINT and SIGHUP unless our caller ignores them, as nohup does. SIGPIPE is ignored from
    // here on. Throws cFailure.
    cSignals();
    cSignals(cSignals const &) = delete;
    cSignals &operator=(cSignals const &) = delete;

    struct cTaken {
        int number = 0; // 0 when none waits
        // An interrupt by the terminal, which the program, of the same group, has got too. A
        // terminal that hangs up tells the leader of its session alone.
        bool by_terminal = false;
    };
    cTaken take() const;
    int descriptor() const { return descriptor_.number(); }

  private:
    cDescriptor descriptor_;
};

} // namespace watchdog

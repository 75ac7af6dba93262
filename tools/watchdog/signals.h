#pragma once
// The signals that the watch dog is sent, as something to be waited for together with messages:
// they are blocked for the whole of its life and taken from a descriptor.

#include "descriptor.h"

namespace watchdog {

class cSignals {
  public:
    // SIGCHLD, and those that ask for an end: SIGTERM, SIGINT, SIGHUP. SIGPIPE is ignored from here
    // on. Throws cFailure.
    cSignals();
    cSignals(cSignals const &) = delete;
    cSignals &operator=(cSignals const &) = delete;

    struct cTaken {
        int number = 0;           // 0 when none waits
        bool by_terminal = false; // then the program, of the same group, has got it too
    };
    cTaken take() const;
    int descriptor() const { return descriptor_.number(); }

  private:
    cDescriptor descriptor_;
};

} // namespace watchdog

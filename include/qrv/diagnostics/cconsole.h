#pragma once
// A display for programs without one: writes the message route to a file descriptor. Nothing of
// what a program prints by std::cout, std::cerr or the library is seen before something like this
// is connected:
//
//     cConsoleDisplay display;   // descriptor 1
//     sig_idle();                // delivers what was printed so far, from then on all is direct
//
// Fire sig_idle() before making the display to drop the start-up text.
// One thread at a time: no part of the library may be used by two threads at once.

#include "qrv/ccomp.h"
#include "qrv/diagnostics/ccout.h"
#include "qrv/signals/csignal.h"

class QRV_API cConsoleDisplay {
  public:
    // Borrows the descriptor, never closes it.
    explicit cConsoleDisplay(int descriptor = 1);
    cConsoleDisplay(cConsoleDisplay const &) = delete;
    cConsoleDisplay &operator=(cConsoleDisplay const &) = delete;
    ~cConsoleDisplay(); // what still waits in the global buffer is written first

    // A write has failed; that text is lost, later ones are tried again.
    bool failed() const { return failed_; }

  private:
    void show(char const *text);

    int descriptor_;
    bool failed_ = false;
    cSlot1<cConsoleDisplay, char const *> slot_;
};

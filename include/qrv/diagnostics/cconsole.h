#pragma once
// Displays for programs without one. What a program prints by std::cout, std::cerr or the library
// is seen at once only when something like this is connected. For most programs one call does it:
//
//     cat::use_console();        // descriptor 1, until the process ends
//
// The class is for another descriptor or a shorter time:
//
//     cConsoleDisplay display;   // writes the message route to descriptor 1
//     sig_idle();                // delivers what was printed so far, from then on all is direct
//
// Fire sig_idle() before making the display to drop the start-up text.

#include "qrv/base/csignal.h"
#include "qrv/ccomp.h"
#include "qrv/diagnostics/ccout.h"

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

namespace cat {

// Drops the start-up text, creates one cConsoleDisplay on descriptor 1, and fires sig_idle, so that
// it shows what the program has printed before. The display lives until the program's last static
// object is destroyed. On a terminal each line is shown when it ends, elsewhere when it is flushed.
// A second call does nothing. Throws what a slot on sig_idle throws; the display stays.
QRV_API void use_console();

} // namespace cat

#pragma once
// Displays for programs that have none. Output of std::cout, std::cerr and the library is visible
// at once only if a display is connected. Most programs need one call:
//
//     cat::use_console();        // descriptor 1, until the process ends
//
// The class is for another descriptor or a shorter time:
//
//     cConsoleDisplay display;   // writes the message output to descriptor 1
//     sig_idle();                // delivers the pending output; later output is direct
//
// To discard the start-up text, fire sig_idle() before creating the display.

#include "qrv/base/csignal.h"
#include "qrv/ccomp.h"
#include "qrv/diagnostics/ccout.h"

class QRV_API cConsoleDisplay {
  public:
    // Borrows the descriptor and never closes it.
    explicit cConsoleDisplay(int descriptor = 1);
    cConsoleDisplay(cConsoleDisplay const &) = delete;
    cConsoleDisplay &operator=(cConsoleDisplay const &) = delete;
    ~cConsoleDisplay(); // first writes the pending output of the global buffer

    // Whether a write has failed; its text is lost, later writes are tried again.
    bool failed() const { return failed_; }

  private:
    void show(char const *text);

    int descriptor_;
    bool failed_ = false;
    cSlot1<cConsoleDisplay, char const *> slot_;
};

namespace cat {

// Discards the start-up text, creates one cConsoleDisplay on descriptor 1, and fires sig_idle, so
// that it shows the program's earlier output. The display exists until the program's last static
// object is destroyed. On a terminal it shows each complete line, elsewhere the output of each
// flush. A second call does nothing. If a slot on sig_idle throws, the exception leaves this
// function and the display stays.
QRV_API void use_console();

} // namespace cat

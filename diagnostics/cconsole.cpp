// The display on a file descriptor: a slot on the message output that writes every piece at once.

#include "qrv/diagnostics/cconsole.h"

#include "diagnostics/ccout_state.h"
#include "qrv/base/platform/cplatform.h"

#include <utility>

namespace {

constinit cConsoleDisplay *the_console = nullptr; // of use_console()

} // namespace

cConsoleDisplay::cConsoleDisplay(int descriptor)
    : descriptor_(descriptor), slot_(this, &cConsoleDisplay::show) {
    if (auto *const messages = cat::message_buffer()) messages->sig().connect(slot_);
}

cConsoleDisplay::~cConsoleDisplay() {
    if (auto *const messages = cat::message_buffer()) messages->pubsync();
}

void cConsoleDisplay::show(char const *text) {
    if (!cat::write_all(descriptor_, text)) failed_ = true;
}

void cat::use_console() {
    if (the_console || !message_buffer()) return;
    message_buffer()->drop_start_text();
    the_console = new cConsoleDisplay;
    message_buffer()->flush_at_line_ends(is_terminal(1)); // RE-ENTERS
    idle_signal()();                                      // RE-ENTERS
}

bool cat::has_console() noexcept { return the_console != nullptr; }

void cat::end_console() { delete std::exchange(the_console, nullptr); }

// The display on a file descriptor: a slot on the message route that writes every piece at once.

#include "qrv/diagnostics/cconsole.h"

#include "qrv/platform/cplatform.h"

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

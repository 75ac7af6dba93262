// Checks the order of start-up by its visible effects, and by the order of the definitions in
// start/startup.cpp.

#include "process.h"
#include "qrv/core/ceros.h"
#include "qrv/core/ctypes.h"
#include "qrv/cvers.h"
#include "qrv/diagnostics/ctrace.h"
#include "tests/support/paths.h"

#include <fstream>
#include <iostream>
#include <sstream>

namespace {

std::string first_text;

void keep(char const *text) { first_text += text; }

// Everything checked here was created before the program's own static objects.
struct cFirst {
    cFirst()
        : streams_redirected(std::cout.rdbuf() == &cOutSigStreambuf &&
                             std::cerr.rdbuf() == &cOutSigStreambuf),
          core_ready(cat::core_state() == cat::cCoreState::ready),
          handler_connected(cat::sig_error().isconnected(cat::errhandler())),
          channels_named(cat::trace_io.ident() == "cat_io.capio" &&
                         cat::trace_lex.ident() == "catlex"),
          idle_connected(sig_idle.isconnected()), debug_unconnected(!debugout.isconnected()) {
        std::cerr << "program";
    }
    bool streams_redirected;
    bool core_ready;
    bool handler_connected;
    bool channels_named;
    bool idle_connected;
    bool debug_unconnected;
} const first;

void check_first() {
    CHECK(first.streams_redirected);
    CHECK(first.core_ready);
    CHECK(first.handler_connected);
    CHECK(first.channels_named);
    CHECK(first.idle_connected);
    CHECK(first.debug_unconnected);
    cFunctionSlot1<char const *, void (*)(char const *)> const slot(keep);
    cOutSigStreambuf.sig().connect(slot);
    sig_idle();
    CHECK_TEXT(first_text, QRV_VERSION_TEXT "\nprogram");
    CHECK(!sig_idle.isconnected());
    CHECK(debugout.isconnected());
}

// The file defines these objects, or the storage reserved for them, in the order of this list,
// after the comment that marks the start of the order.
void check_text_order() {
    std::ifstream file(test::source_file("start/startup.cpp"));
    std::ostringstream all;
    all << file.rdbuf();
    std::string const text = all.str();
    CHECK(text.find("#include <iostream>") < text.find("#include \""));
    std::size_t at = text.find("the order starts here");
    CHECK(at != std::string::npos);
    for (char const *name : {" shared_table_start",
                             " repositories_start",
                             " sig_idle",
                             " sig_init",
                             " sig_exit",
                             " sig_inittemplates",
                             " sig_closetemplates",
                             "cat_io.capio",
                             "catlex",
                             " debugout(",
                             " cOutSigStreambuf",
                             " message_file_closer",
                             " version_text",
                             " cat::loaded_modules",
                             " main_module(",
                             "unknown",
                             " intf;",
                             "undoGlobalList",
                             "redoGlobalList",
                             " stack_base",
                             " cat::watchdog_queue;",
                             " startup_test(",
                             " watchdog_send;",
                             " &sig_progstep",
                             " sig_proginit;",
                             " sig_progbegin;"}) {
        std::size_t const next = text.find(name, at);
        if (next == std::string::npos) std::fprintf(stderr, "out of order: %s\n", name);
        CHECK(next != std::string::npos);
        if (next != std::string::npos) at = next;
    }
}

} // namespace

int main() {
    check_first();
    check_text_order();
    return failures != 0;
}

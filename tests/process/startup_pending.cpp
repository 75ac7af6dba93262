// Output printed before anyone can listen is stored until the first idle moment, from any
// source; the process's own descriptors receive none of it.

#include "process.h"
#include "qrv/cvers.h"
#include "qrv/diagnostics/cconsole.h"
#include "qrv/diagnostics/ctrace.h"

#include <iostream>

namespace {

// Static initialisation of the program runs after the library's start-up.
struct cEarly {
    cEarly() { std::cout << "static, " << std::flush; }
} const early;

std::string const start_text = QRV_VERSION_TEXT "\nstatic, ";

void print_everywhere() {
    std::cout << "cout, ";
    std::cerr << "cerr, ";
    cprintf("cprintf, ");
    cSetTracing("catlex");
    cat::trace_lex << "trace, " << std::flush;
    cOstream(true, nullptr) << "stream\n";
}

std::string const printed = "cout, cerr, cprintf, trace, stream\n";

int child(std::string const &what) {
    if (what == "silent") {
        print_everywhere();
    } else if (what == "display first") {
        print_everywhere();
        cConsoleDisplay const display;
        say("[idle]");
        sig_idle();
        say("[again]");
        sig_idle();
        std::cerr << "direct";
    } else if (what == "idle first") {
        print_everywhere();
        sig_idle();
        cConsoleDisplay const display;
        std::cerr << "direct";
    } else if (what == "waiting at the end") {
        sig_idle();
        cConsoleDisplay const display;
        std::cout << "waiting";
    }
    return 0;
}

} // namespace

int main(int argc, char **argv) {
    if (argc > 1) return child(argv[1]);
    cResult const silent = run_self("silent");
    CHECK(silent.status == 0);
    CHECK_TEXT(silent.output, "");
    CHECK_TEXT(run_self("display first").output, "[idle]" + start_text + printed + "[again]direct");
    CHECK_TEXT(run_self("idle first").output, "direct");
    CHECK_TEXT(run_self("waiting at the end").output, "waiting");
    return failures != 0;
}

// Two trace channels that stand in the code for good. One string says which of them write, and
// where.
#include "qrv/diagnostics/cconsole.h"
#include "qrv/diagnostics/ccout.h"
#include "qrv/diagnostics/ctrace.h"
#include "qrv/text/file/cfile.h"

#include <iostream>

namespace {
cTracer net("net.telegram");
cTracer store("store");

void measure(int value) {
    net << "telegram with " << value << std::endl; // one test while the channel is off
    store << "stored " << value << std::endl;
}

void trace(char const *spec) {
    std::cout << "-- \"" << spec << "\"\n";
    cSetTracing(spec);
    measure(21);
}
} // namespace

int main() {
    sig_idle();
    cConsoleDisplay display;

    trace("");
    trace("net");             // the channels that begin so, to cerr
    trace("+store:cout,log"); // another one too, to two places
    trace("-net");            // no longer
    trace("");                // none at all

    std::cout << "-- the file\n" << cat::file2string("log");
    return 0;
}

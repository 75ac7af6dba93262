// Two trace channels that stay in the code. One string selects which of them write, and where.
// Usage: traces [FILE], by default traces.log in the current folder.
#include "qrv/diagnostics/cconsole.h"
#include "qrv/diagnostics/ctrace.h"
#include "qrv/text/file/cfile.h"

#include <iostream>
#include <string>

namespace {
cTracer net("net.telegram");
cTracer store("store");

void measure(int value) {
    net << "telegram with " << value << std::endl; // costs one test while the channel is off
    store << "stored " << value << std::endl;
}

void trace(std::string const &spec) {
    std::cout << "-- \"" << spec << "\"\n";
    cSetTracing(spec);
    measure(21);
}
} // namespace

int main(int argc, char **argv) {
    cat::use_console();
    std::string const file = argc > 1 ? argv[1] : "traces.log";

    trace("");                    // as at the start: no channel writes
    trace("net");                 // the channels whose names begin with it, to cerr
    trace("+store:cout," + file); // another channel too, to two streams
    trace("-net");                // without that one
    trace("");                    // none

    std::cout << "-- the file\n" << cat::file2string(file.c_str());
}

// The command line tool `qrv`: reads, checks and rewrites files of object trees. Results are
// printed to standard output and messages to standard error. A valid file produces no messages.

#include "qrv/base/csignal.h"
#include "qrv/diagnostics/cconsole.h"
#include "tools/qrv/commands/command_line.h"
#include "tools/qrv/output/exit_code.h"
#include "tools/qrv/output/no_memory.h"
#include "tools/qrv/output/output.h"
#include "tools/qrv/output/thrown.h"

#include <csignal>
#include <unistd.h>

// Runs before the static initialisation of the library, which allocates memory too.
[[gnu::section(".preinit_array"),
  gnu::used]] static void (*const before_static_code)() = end_when_memory_ends;

int main(int argc, char **argv) {
    fill_standard_descriptors(O_WRONLY, O_RDONLY); // so that the use of a closed one still fails
    std::signal(SIGPIPE, SIG_IGN);                 // the exit code reports a closed pipe
    sig_idle();                                    // discards the start-up text
    cConsoleDisplay const messages(STDERR_FILENO);
    try {
        return run_command_line(argc, argv);
    } catch (...) {
        put_error("qrv", thrown());
        return exit_failed;
    }
}

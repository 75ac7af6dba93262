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

// Called before the static code of the library, since that allocates memory too.
[[gnu::section(".preinit_array"),
  gnu::used]] static void (*const before_static_code)() = end_when_memory_ends;

int main(int argc, char **argv) {
    fill_standard_descriptors(O_WRONLY, O_RDONLY); // using them fails
    std::signal(SIGPIPE, SIG_IGN);                 // a closed pipe is reported by the exit code
    sig_idle();                                    // the start-up text is not printed
    cConsoleDisplay const messages(STDERR_FILENO);
    try {
        return run_command_line(argc, argv);
    } catch (...) {
        put_error("qrv", thrown());
        return exit_failed;
    }
}

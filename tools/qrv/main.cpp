// The command line tool `qrv`: reads, checks and rewrites files of object trees. What it is asked
// for goes to standard output, what it has to say to standard error, and of a good file it says
// nothing.

#include "qrv/base/csignal.h"
#include "qrv/diagnostics/cconsole.h"
#include "tools/qrv/commands/command_line.h"
#include "tools/qrv/output/exit_code.h"
#include "tools/qrv/output/output.h"
#include "tools/qrv/output/thrown.h"

#include <csignal>
#include <unistd.h>

int main(int argc, char **argv) {
    fill_standard_descriptors();
    std::signal(SIGPIPE, SIG_IGN); // a reader that has gone is an exit code
    sig_idle();                    // the start-up text goes where nobody listens
    cConsoleDisplay const messages(STDERR_FILENO);
    try {
        return run_command_line(argc, argv);
    } catch (...) {
        put_error("qrv", thrown());
        return exit_failed;
    }
}

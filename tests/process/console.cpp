// cat::use_console(): from this call on, all output of a program goes to descriptor 1, up to the
// last static object, and on a terminal line by line.

#include "process.h"
#include "qrv/diagnostics/cconsole.h"
#include "qrv/diagnostics/cerr.h"

#include <cstring>
#include <exception>
#include <fcntl.h>
#include <iostream>

namespace {

bool speaks = false;

struct cLate {
    ~cLate() {
        if (speaks) std::cout << "static object\n";
    }
} const late;

void call_again() { cat::use_console(); }

int child(std::string const &what) {
    if (what == "hello") {
        cat::use_console();
        std::cout << "Hello\n";
    } else if (what == "twice") {
        cat::use_console();
        std::cout << "once, ";
        cat::use_console();
        std::cerr << "not twice\n";
    } else if (what == "before") {
        std::cerr << "flushed, ";
        std::cout << "waiting, ";
        cat::use_console();
        cprintf("direct\n");
    } else if (what == "re-entered") {
        cFunctionSlot<void (*)()> const slot(call_again, sig_idle);
        cat::use_console();
        std::cout << "once\n";
    } else if (what == "a slot throws") {
        {
            cFunctionSlot const slot([] { throw cErr(1, "thrown"); }, sig_idle);
            try {
                cat::use_console();
            } catch (std::exception const &error) {
                std::cout << error.what() << ", ";
            }
        }
        cat::use_console();
        std::cout << "shown\n";
    } else if (what == "static object") {
        speaks = true;
        cat::use_console();
    } else if (what == "pipe") {
        cat::use_console();
        std::cout << "first line\nsecond ";
        say("[nothing is flushed]");
        std::cout << "line" << std::endl;
    } else if (what == "terminates") {
        cat::use_console();
        std::cout << "flushed\n" << std::flush << "waiting\n";
        std::terminate();
    } else if (what == "idle before") {
        sig_idle();
        cat::use_console();
        std::cout << "seen\n";
    }
    return 0;
}

// The child process on a terminal: the output after each step.
int terminal_child() {
    cat::use_console();
    std::cout << "first line\nsecond ";
    say("|");
    std::cout << "line\n";
    say("|");
    std::cout << std::string(3000, 'x');
    say("|");
    std::cout.put('y').put('\n');
    say("|");
    std::cout << std::string("with a \0zero\n", 13);
    std::cout << "prompt: " << std::flush;
    say("|");
    std::cerr << "error";
    say("|");
    cat::std_out() << "rest";
    return 0;
}

// Runs this program on a separate terminal, and converts the terminal's CR LF to LF.
std::string on_a_terminal() {
    int const control = ::posix_openpt(O_RDWR | O_NOCTTY);
    if (control < 0 || ::grantpt(control) != 0 || ::unlockpt(control) != 0) return "no terminal";
    int const terminal = ::open(::ptsname(control), O_RDWR | O_NOCTTY);
    pid_t const process = ::fork();
    if (process == 0) {
        ::dup2(terminal, 1);
        ::execl("/proc/self/exe", "self", "terminal", static_cast<char *>(nullptr));
        ::_exit(127);
    }
    ::close(terminal);
    std::string text;
    for (char c = 0; ::read(control, &c, 1) == 1;)
        if (c != '\r') text += c;
    ::close(control);
    int status = 0;
    ::waitpid(process, &status, 0);
    CHECK(WIFEXITED(status) && WEXITSTATUS(status) == 0);
    return text;
}

} // namespace

int main(int argc, char **argv) {
    if (argc > 1) return std::strcmp(argv[1], "terminal") == 0 ? terminal_child() : child(argv[1]);
    CHECK_TEXT(run_self("hello").output, "Hello\n");
    CHECK_TEXT(run_self("twice").output, "once, not twice\n");
    CHECK_TEXT(run_self("before").output, "flushed, waiting, direct\n");
    CHECK_TEXT(run_self("re-entered").output, "once\n");
    CHECK_TEXT(run_self("a slot throws").output, "thrown, shown\n");
    CHECK_TEXT(run_self("static object").output, "static object\n");
    CHECK_TEXT(run_self("pipe").output, "[nothing is flushed]first line\nsecond line\n");
    CHECK_TEXT(run_self("idle before").output, "seen\n");
    CHECK_TEXT(run_self("terminates").output, "flushed\nwaiting\n");
    CHECK_TEXT(on_a_terminal(), "first line\n|second line\n|" + std::string(2046, 'x') + '|' +
                                    std::string(954, 'x') + "y\n|with a zero\nprompt: |error|rest");
    return failures != 0;
}

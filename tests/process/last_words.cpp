// The output of a program without an idle moment: it appears on descriptor 2 when the process ends,
// without the library's own start message.

#include "process.h"
#include "qrv/base/platform/cplatform.h"
#include "qrv/diagnostics/cconsole.h"
#include "qrv/diagnostics/cerr.h"

#include <exception>
#include <iostream>
#include <stdexcept>
#include <string_view>

namespace {

[[noreturn]] void early_handler() {
    say("[early handler]");
    ::_exit(7);
}

[[noreturn]] void late_handler() {
    say("[late handler]");
    ::_exit(8);
}

// Runs before the library starts.
void set_early_handler(int argc, char **argv, char **) {
    if (argc < 2 || !std::string_view(argv[1]).starts_with("early handler")) return;
    std::set_terminate(early_handler);
}
[[gnu::section(".preinit_array"), gnu::used]] void (*const before_all)(int, char **,
                                                                       char **) = set_early_handler;

struct cLate {
    ~cLate() {
        if (speaks) std::cout << "static object" << std::flush;
    }
    static inline bool speaks = false;
} const late;

void print_everywhere() {
    std::cout << "cout, ";
    std::cerr << "cerr, ";
    cprintf("cprintf, ");
    cErr error(0x40000000, "an error");
    cErrHandler{}(error);
    std::cout << "not flushed";
}

std::string const printed = "cout, cerr, cprintf, an error\nnot flushed";

int child(std::string const &what) {
    ::dup2(1, 2); // the parent reads descriptor 1
    if (what == "says nothing") return 0;
    if (what == "hello") {
        std::cout << "Hello\n";
        return 0;
    }
    if (what == "cerr is bad") {
        std::cout << "flushed, " << std::flush << "waiting";
        std::cerr.setstate(std::ios::badbit);
        return 0;
    }
    if (what == "static object") {
        cLate::speaks = true;
        return 0;
    }
    if (what == "its last words are the library's") {
        std::cout << "Quorvanta unloaded\n";
        return 0;
    }
    if (what.starts_with("idle")) sig_idle();
    if (what.ends_with("late handler")) std::set_terminate(late_handler);
    print_everywhere();
    if (what.ends_with("idle after it")) sig_idle();
    if (what == "exit") std::exit(3);
    if (what == "_exit") ::_exit(4);
    if (what == "throws") throw std::runtime_error("nobody catches this");
    if (what.ends_with("handler") || what.ends_with("terminates")) std::terminate();
    return 0;
}

} // namespace

int main(int argc, char **argv) {
    if (argc > 1) return child(argv[1]);
    CHECK_TEXT(run_self("says nothing").output, "");
    CHECK_TEXT(run_self("hello").output, "Hello\n");
    CHECK_TEXT(run_self("returns").output, printed);
    CHECK_TEXT(run_self("static object").output, "static object");
    CHECK_TEXT(run_self("cerr is bad").output, "flushed, waiting");
    CHECK_TEXT(run_self("its last words are the library's").output, "Quorvanta unloaded\n");
    cResult const by_exit = run_self("exit");
    CHECK(by_exit.status == 3);
    CHECK_TEXT(by_exit.output, printed);
    cResult const at_once = run_self("_exit");
    CHECK(at_once.status == 4);
    CHECK_TEXT(at_once.output, "");

    // A program with an idle moment has its own listeners, or none.
    CHECK_TEXT(run_self("idle").output, "");
    CHECK_TEXT(run_self("idle after it").output, "");

    cResult const throwing = run_self("throws");
    CHECK(throwing.status == -1);
    std::string const reported = printed + "terminate called after throwing an instance of "
                                           "'std::runtime_error'\n  what():  nobody catches this\n";
    CHECK_TEXT(throwing.output, reported);
    CHECK_TEXT(run_self("terminates").output,
               printed + "terminate called without an active exception\n");
    CHECK_TEXT(run_self("idle, terminates").output,
               "terminate called without an active exception\n");

    cResult const early = run_self("early handler");
    CHECK(early.status == 7);
    CHECK_TEXT(early.output, printed + "[early handler]");
    cResult const replaced = run_self("late handler");
    CHECK(replaced.status == 8);
    CHECK_TEXT(replaced.output, "[late handler]");
    CHECK_TEXT(run_self("early handler, then a late handler").output, "[late handler]");
    return failures != 0;
}

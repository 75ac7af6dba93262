// The end of a process: the program's static objects are destroyed first, then the library prints
// its last message while the message output still exists; later output is lost without harm.

#include "process.h"
#include "qrv/base/platform/cplatform.h"
#include "qrv/core/ctypes.h"
#include "qrv/diagnostics/cerr.h"
#include "qrv/diagnostics/ctrace.h"

#include <iostream>

extern "C" int __cxa_atexit(void (*function)(void *), void *argument, void *library);

namespace {

std::string const trace_file = "startup_exit.trace";

void show(char const *text) { say(text); }

// Never destroyed, so it still listens when the library is destroyed.
cFunctionSlot1<char const *, void (*)(char const *)> *last_listener = nullptr;

struct cLate {
    ~cLate() {
        if (last_listener) std::cerr << "[static object]";
    }
} const late;

bool live_on = false;

// Runs after all static objects of the program and the library are destroyed: a function registered
// before the library starts is called last.
void after_the_end(void *) {
    if (!live_on) return;
    say("[after the end]");
    std::cout << "lost" << std::flush;
    std::cerr << "lost";
    cprintf("lost %i", 1);
    cMsgDispOut("lost");
    cSetTracing("late:cerr,cout");
    cTracer("late") << "lost" << std::endl;
    {
        cOstream os(true, nullptr);
        os << "lost" << std::flush;
        cErrStream error(0x40000000);
        error << "composed";
        say(error.as_string());
        cErrHandler const handler;
        handler(error);
    }
    std::ostream empty(std::cerr.rdbuf());
    say(empty.rdbuf() ? "[a buffer]" : "[no buffer]");
}

void register_last(int, char **, char **) { __cxa_atexit(after_the_end, nullptr, nullptr); }
[[gnu::section(".preinit_array"), gnu::used]] void (*const before_all)(int, char **,
                                                                       char **) = register_last;

int child(std::string const &what) {
    last_listener = new cFunctionSlot1<char const *, void (*)(char const *)>(show);
    sig_idle();
    cOutSigStreambuf.sig().connect(*last_listener);
    live_on = what == "live on";
    if (what == "exceptions") std::cout.exceptions(std::ios::badbit);
    std::cout << "[unfinished]";
    cSetTracing("catlex:cerr," + trace_file);
    cat::trace_lex << "[trace]";
    return what == "exit" ? 5 : 0;
}

} // namespace

int main(int argc, char **argv) {
    if (argc > 1) {
        int const status = child(argv[1]);
        if (status) std::exit(status);
        return status;
    }
    std::string const text = "[unfinished][trace][static object]Quorvanta unloaded\n";
    cResult const plain = run_self("return");
    CHECK(plain.status == 0);
    CHECK_TEXT(plain.output, text);
    cResult const by_exit = run_self("exit");
    CHECK(by_exit.status == 5);
    CHECK_TEXT(by_exit.output, text);
    cResult const throwing = run_self("exceptions");
    CHECK(throwing.status == 0);
    CHECK_TEXT(throwing.output, text);
    cResult const living_on = run_self("live on");
    CHECK(living_on.status == 0);
    CHECK_TEXT(living_on.output, text + "[after the end]composed[no buffer]");
    CHECK(::unlink(trace_file.c_str()) == 0);
    return failures != 0;
}

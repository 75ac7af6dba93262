// An environment variable switches debug output on: to a file, to which it is appended, or to the
// standard error descriptor. Without the variable, or if the file can't be opened, the output is
// dropped.

#include "process.h"
#include "qrv/base/platform/cplatform.h"
#include "qrv/diagnostics/ccout.h"

#include <fstream>
#include <iostream>
#include <sstream>

namespace {

std::string const name = "startup_debugout.log";

void say_text(char const *text) { say(text); }

std::string log_text() {
    std::ifstream file(name);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

int child(std::string const &what) {
    if (what == "stderr") ::dup2(1, 2);
    std::cerr << "before the first idle, ";
    sig_idle();
    std::cerr << "after it\n";
    debugout("direct\n");
    if (what == "hook") {
        qrv_set_debug_output(say_text);
        debugout("to the hook\n");
        qrv_set_debug_output(nullptr);
        debugout("back\n");
    }
    return 0;
}

} // namespace

int main(int argc, char **argv) {
    if (argc > 1) return child(argv[1]);
    ::unlink(name.c_str());
    std::ofstream(name) << "old\n";
    std::string const farewell = "Quorvanta unloaded\n";

    CHECK(run_self("file", {{"QRV_DEBUGOUT", name}}).output.empty());
    CHECK_TEXT(log_text(), "old\nafter it\ndirect\n" + farewell);

    std::ofstream(name) << "";
    CHECK_TEXT(run_self("hook", {{"QRV_DEBUGOUT", name}}).output, "to the hook\n");
    CHECK_TEXT(log_text(), "after it\ndirect\nback\n" + farewell);

    CHECK_TEXT(run_self("stderr", {{"QRV_DEBUGOUT", "stderr"}}).output,
               "after it\ndirect\n" + farewell);
    for (char const *value : {"", "/nowhere/at/all"}) {
        cResult const result = run_self("stderr", {{"QRV_DEBUGOUT", value}});
        CHECK(result.status == 0);
        CHECK_TEXT(result.output, "");
    }
    CHECK(::unlink(name.c_str()) == 0);
    return failures != 0;
}

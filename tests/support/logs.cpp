// The logs of messages and errors. They use public headers only, so that programs with the shared
// library can use them too.
#include "qrv/containers/cattspec.h"
#include "qrv/core/ceros.h"
#include "qrv/core/ctypes.h"
#include "tests/support/fixture.h"

#include <cstdio>
#include <sstream>

bool test::listening() {
    static bool const done = [] {
        core_bootstrap();
        cAttspec::nilspec(); // created on first use
        sig_idle();
        return true;
    }();
    return done;
}

std::vector<std::string> lines_of(std::string const &text) {
    std::vector<std::string> lines;
    std::istringstream is(text);
    for (std::string line; std::getline(is, line);) lines.push_back(line);
    return lines;
}

cMessageLog::cMessageLog() : slot_(this, &cMessageLog::keep) {
    test::listening();
    cOutSigStreambuf.pubsync();
    cOutSigStreambuf.sig().connect(slot_);
}

std::string cMessageLog::take() {
    cOutSigStreambuf.pubsync();
    return std::exchange(text_, std::string());
}

cErrorLog::cErrorLog() : before_(cat::errhandler()), slot_(this, &cErrorLog::keep) {
    cat::errhandler() = cErrHandler(0, 0, 0xFFFFFFFFU);
    cat::sig_error().connect(slot_);
}

cErrorLog::~cErrorLog() { cat::errhandler() = before_; }

std::string cErrorLog::text() const {
    std::string all;
    for (cEntry const &entry : entries_) {
        char code[16];
        std::snprintf(code, sizeof code, "0x%08X ", entry.code);
        all += code + entry.text + '\n';
    }
    return all;
}

void cErrorLog::keep(cErr &error) { entries_.push_back({error.code(), error.as_string()}); }

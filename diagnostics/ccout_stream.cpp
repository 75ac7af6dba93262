// The message streams.
//
// cOstream:        put area --> outbuf's sig --> do_out (display or debug output, own file)
//                                            --> sigout of connected streams --> their sig ...
// cOstringstream:  put area --> outbuf's sig --> do_strslot (the target string)
//
// The base std::ostream is constructed first, when the buffer does not exist yet: it starts without
// one and gets it in the constructor's body. It is destroyed after the buffer, which its destructor
// does not use.

#include "diagnostics/ccout_state.h"
#include "qrv/base/platform/cplatform.h"
#include "qrv/diagnostics/ccout.h"

#include <locale>

cOstream::cOstream(bool dispout, char const *path)
    : std::ostream(nullptr), sigout_(this, &cOstream::do_sigout), outslot_(this, &cOstream::do_out),
      dispout_(dispout) {
    rdbuf(&outbuf_);
    imbue(std::locale::classic());
    outbuf_.sig().connect(outslot_);
    if (path) fileopen(path);
}

cOstream::~cOstream() {
    outbuf_.pubsync();
    fileclose();
}

void cOstream::connect(cOstream const &other) { outbuf_.sig().connect(other.sigout_); }

void cOstream::fileopen(char const *path) {
    fileclose();
    file_ = path ? std::fopen(path, "w") : nullptr;
    if (file_)
        cprintf("Start  %s\n", cat::local_time(cat::start_time_format).c_str());
    else
        ::cprintf("Fehler beim Öffnen des Message-Files '%s'\n", path ? path : "");
}

void cOstream::fileclose() {
    if (!file_) return;
    std::fclose(file_);
    file_ = nullptr;
}

int cOstream::cprintf(char const *format, ...) {
    va_list args;
    va_start(args, format);
    int const result = cvprintf(format, args);
    va_end(args);
    return result;
}

int cOstream::cvprintf(char const *format, va_list args) {
    cat::cMessageText text;
    int const result = cat::format_message(text, format, args);
    if (flush_own()) outbuf_.sig()(text.data());
    return result;
}

// If a listener destroys the stream, its file is already closed.
void cOstream::do_out(char const *text) {
    std::weak_ptr<char const> const life = life_;
    if (dispout_)
        cMsgDispOut(text); // RE-ENTERS
    else if (file_)
        cat::debug_output(text); // RE-ENTERS
    if (!life.expired() && file_) cat::write_percent_text(file_, text);
}

void cOstream::do_sigout(char const *text) {
    if (flush_own()) outbuf_.sig()(text);
}

bool cOstream::flush_own() {
    std::weak_ptr<char const> const life = life_;
    bool const failed = rdbuf() && rdbuf()->pubsync() == -1; // RE-ENTERS
    if (life.expired()) return false;
    if (failed) setstate(std::ios::badbit);
    return true;
}

cOstringstream::cOstringstream()
    : std::ostream(nullptr), strslot_(this, &cOstringstream::do_strslot), target_(&own_) {
    start();
}

cOstringstream::cOstringstream(std::string &target)
    : std::ostream(nullptr), strslot_(this, &cOstringstream::do_strslot), target_(&target) {
    start();
}

void cOstringstream::start() {
    rdbuf(&outbuf_);
    imbue(std::locale::classic());
    outbuf_.sig().connect(strslot_);
}

cOstringstream::~cOstringstream() = default;

std::string cOstringstream::str() const {
    flush_text();
    return *target_;
}

void cOstringstream::str(std::string const &text) {
    flush_text();
    *target_ = text;
}

void cOstringstream::clear() {
    target_->clear();
    std::ios::clear();
}

// Pending output is already a part of the stream's text, so flushing does not change the value of a
// const stream. But it uses non-const members, hence the const_cast.
void cOstringstream::flush_text() const {
    if (rdbuf() && rdbuf()->pubsync() == -1)
        const_cast<cOstringstream *>(this)->setstate(std::ios::badbit);
}

// Message output: the buffers, the global one of std::cout and std::cerr, and the two sinks of
// cprintf.
//
// The path of the output:      put area --full or flushed--> out() --> sig
// For the global buffer:       out() --> pending, until the first sig_idle
//                              out() --> sig, then debugout, from then on
// A program without sig_idle:  pending, put area --at its end--> descriptor 2
//
// The put area is copied and emptied before out() runs, since out() ends in user code that may
// print again. An exception of that code must not leave overflow() or sync(): std::cerr flushes in
// the destructor of its sentry, where an exception ends the process; elsewhere the exception would
// only set the stream's bad state and silence it permanently. A piece counts as delivered when its
// slot throws.

#include "qrv/diagnostics/ccout.h"

#include "diagnostics/ccout_state.h"
#include "qrv/base/platform/cplatform.h"
#include "qrv/diagnostics/ctrace.h"

#include <cstdlib>
#include <cstring>
#include <exception>

namespace {

constinit cTheOutStreambuf *global_buffer = nullptr; // while it exists
constinit std::FILE *message_file = nullptr;

constexpr int eof = std::char_traits<char>::eof();

void set_buffer(std::ostream &os, std::streambuf *buffer) {
    try {
        os.rdbuf(buffer);
    } catch (...) { // the stream is bad without a buffer; the program may have enabled exceptions
    }
}

void lead_standard_streams_to(std::streambuf *buffer) {
    set_buffer(cat::std_out(), buffer);
    set_buffer(cat::std_err(), buffer);
}

} // namespace

std::istream &cat::std_in() { return standard_streams().in; }
std::ostream &cat::std_out() { return standard_streams().out; }
std::ostream &cat::std_err() { return standard_streams().err; }

cSignal &cat::idle_signal() { return sig_idle; }

cTheOutStreambuf *cat::message_buffer() { return global_buffer; }

cOutStreambuf::cOutStreambuf() {
    empty();
    if (global_buffer) lead_standard_streams_to(global_buffer);
}

cOutStreambuf::~cOutStreambuf() = default;

void cOutStreambuf::out(char const *text) { sig_(text); }

void cOutStreambuf::flush_at_line_ends(bool on) {
    pubsync(); // RE-ENTERS
    by_line_ = on;
    empty();
}

void cOutStreambuf::empty() { setp(buffer_.data(), buffer_.data() + (by_line_ ? 0 : usable)); }

// In line mode the put area ends at its last character, so that overflow() gets each character.
bool cOutStreambuf::keep(int c, std::size_t length) {
    if (!by_line_ || c == 0 || c == eof || c == '\n' || length == usable) return false;
    buffer_[length] = static_cast<char>(c);
    setp(buffer_.data(), buffer_.data() + length + 1);
    pbump(static_cast<int>(length + 1));
    return true;
}

int cOutStreambuf::overflow(int c) {
    auto length = static_cast<std::size_t>(pptr() - pbase());
    if (keep(c, length)) return c;
    std::array<char, size> text;
    std::memcpy(text.data(), pbase(), length);
    if (c != 0 && c != eof) text[length++] = static_cast<char>(c);
    text[length] = '\0';
    empty();
    try {
        out(text.data()); // RE-ENTERS
    } catch (...) {
    }
    return c == eof ? 0 : c;
}

int cOutStreambuf::underflow() { return eof; }

int cOutStreambuf::sync() {
    if (!pptr()) return 0;
    if (gptr() < egptr()) return -1;
    return has_text() ? overflow(eof) : 0;
}

namespace {

constinit std::terminate_handler former_handler = nullptr;

[[noreturn]] void end_with_last_words() {
    if (global_buffer) global_buffer->write_last_words();
    if (former_handler) former_handler();
    std::abort();
}

} // namespace

cTheOutStreambuf::cTheOutStreambuf()
    : initslot_(this, &cTheOutStreambuf::_initsync, cat::idle_signal()) {
    global_buffer = this;
    lead_standard_streams_to(this);
    if (std::get_terminate() != end_with_last_words)
        former_handler = std::set_terminate(end_with_last_words);
}

cTheOutStreambuf::~cTheOutStreambuf() {
    write_last_words();
    if (std::get_terminate() == end_with_last_words) std::set_terminate(former_handler);
    global_buffer = nullptr;
    cTraceStream::detach(this);
    lead_standard_streams_to(nullptr);
}

void cTheOutStreambuf::out(char const *text) {
    if (synced_)
        cOutStreambuf::out(text);
    else
        pending_ += text;
}

void cTheOutStreambuf::drop_start_text() {
    if (!synced_ && pending_.starts_with(cat::start_text))
        pending_.erase(0, cat::start_text.size());
}

void cTheOutStreambuf::write_last_words() noexcept {
    if (synced_ && !cat::has_console()) return;
    int const descriptor = synced_ ? 1 : 2;
    drop_start_text();
    std::string_view text = synced_ ? "" : std::string_view(pending_);
    if (text.ends_with(cat::end_text)) text.remove_suffix(cat::end_text.size());
    cat::write_all(descriptor, text);
    cat::write_all(descriptor, {pbase(), static_cast<std::size_t>(pptr() - pbase())});
    pending_.clear();
    empty();
}

// The first idle moment. Sends the pending output before debugout is connected, so that the
// debugger sees only later output; connects debugout also if a slot throws.
void cTheOutStreambuf::_initsync() {
    initslot_.disconnect();
    synced_ = true;
    try {
        out(pending_.c_str()); // RE-ENTERS
    } catch (...) {
        sig().connect(debugout);
        throw;
    }
    sig().connect(debugout);
}

void cMsgDispOut(char const *text) {
    if (!global_buffer || !text) return;
    if (global_buffer->has_text()) global_buffer->pubsync();
    if (global_buffer) global_buffer->out(text);
}

void cat::put_message(std::string_view text) {
    auto const size = static_cast<std::streamsize>(text.size());
    if (!global_buffer) {
        cat::std_err().write(text.data(), size).flush();
        return;
    }
    global_buffer->sputn(text.data(), size);
    global_buffer->pubsync();
}

void cat::write_percent_text(std::FILE *file, char const *text) {
    while (char const *percent = std::strstr(text, "%%")) {
        std::fwrite(text, 1, static_cast<std::size_t>(percent + 1 - text), file);
        text = percent + 2;
    }
    std::fputs(text, file);
}

namespace {

void write_message_file(char const *text) {
    if (message_file) cat::write_percent_text(message_file, text);
}

// The sinks of cprintf, in this order.
constexpr std::array<void (*)(char const *), 2> sinks{write_message_file, cMsgDispOut};

} // namespace

int cprintf(char const *format, ...) {
    va_list args;
    va_start(args, format);
    int const result = cvprintf(format, args);
    va_end(args);
    return result;
}

int cvprintf(char const *format, va_list args) {
    cat::cMessageText text;
    int const result = cat::format_message(text, format, args);
    for (auto *const sink : sinks) sink(text.data());
    return result;
}

// The text is in the caller's frame, not in one shared buffer: a slot may print its own argument,
// and the slots after it still get the original text.
int cat::format_message(cMessageText &text, char const *format, va_list args) {
    text.front() = '\0';
    int const length = std::vsnprintf(text.data(), text.size(), format, args);
    text.back() = '\0';
    return length < static_cast<int>(text.size()) ? length : -1;
}

std::FILE *cprintfopen(char const *path) {
    cprintfclose();
    message_file = path ? std::fopen(path, "w") : nullptr;
    if (message_file)
        cprintf("Start  %s\n", cat::local_time(cat::start_time_format).c_str());
    else
        cprintf("Fehler beim Öffnen des Message-Files '%s'", path ? path : "");
    return message_file;
}

void cprintfclose() {
    if (!message_file) return;
    std::fclose(message_file);
    message_file = nullptr;
}

char *cConvertNl(char const *text, bool *hadbell) {
    if (!text) text = "";
    std::size_t size = 1;
    for (char const *p = text; *p; ++p) size += *p == '\n' ? 2 : 1;
    char *const result = new char[size];
    char *to = result;
    bool bell = false;
    for (char const *p = text; *p; ++p) {
        bell |= *p == '\a';
        if (*p == '\a') continue;
        if (*p == '\n') *to++ = '\r';
        *to++ = *p;
    }
    *to = '\0';
    if (hadbell) *hadbell = bell;
    return result;
}

// Each call passes the whole rest and advances by only 1023: so a debugger that cuts long strings
// shows everything. DELIBERATE: the calls overlap.   Pinned: debugout_may_be_called_during_debugout
void cat::pass_to_debug_output(char const *text) {
    constexpr std::size_t step = 1023;
    for (std::size_t left = std::strlen(text);; text += step, left -= step) {
        cat::debug_output(text);
        if (left <= step) return;
    }
}

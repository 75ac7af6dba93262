// Static objects of a program, of every class of diagnostics and signals, live during the whole
// process and are destroyed after main without a report of a sanitizer.

#include "process.h"
#include "qrv/core/ceros.h"
#include "qrv/core/cobjd.h"
#include "qrv/cvers.h"
#include "qrv/diagnostics/cconsole.h"
#include "qrv/diagnostics/ctrace.h"

#include <exception>
#include <iostream>

namespace {

void nothing() {}
void no_text(char const *) {}
void no_error(cErr &) {}

cSignal signal_before;
cFunctionSlot<void (*)()> slot(nothing, signal_before);
cSignal chained(static_cast<cSSBase0 const &>(slot));
cDeleteSignal farewell(static_cast<cSSBase0 const &>(slot));
cSigInfo info;
cFunctionSlot1<char const *, void (*)(char const *)> info_slot(no_text, info);
cRef<cShared> block;

cTracer channel("static.channel", 1);
cTracer channel_copy(channel);
cRef<cTraceStream> trace_stream = cTraceStream::open("cerr");
cTraceStream own_stream("cout");

cErr error(0x40000001, "static");
cException exception("static");
cErrStream error_stream(0x40000002, "static");
cErrHandler handler(0, 0x40000000, 0);
cFunctionSlot1<cErr &, void (*)(cErr &)> error_slot(no_error);
std::exception_ptr thrown;

std::string target;
cOutStreambuf buffer;
cOstream stream(true, nullptr);
cOstream other_stream(false, nullptr);
cOstringstream text_stream;
cOstringstream target_stream(target);
cConsoleDisplay display(1);
cStopWatch watch;

objref text_object;
objref number_object;

// Created last, so it is destroyed first; its destructor uses the others once more.
struct cUser {
    ~cUser() {
        signal_before();
        channel << "end" << std::endl;
        error_stream << ", end";
        error = error_stream;
        stream << "end of static objects" << std::endl;
        text_stream << watch;
        eros().clear();
        eros() << "late";
    }
} const user;

void use_all() {
    sig_idle();
    block = signal_before.block();
    cSetTracing("static:cerr,cout");
    channel << "one" << std::endl;
    trace_stream->os() << "two" << std::endl;
    own_stream.os() << "three" << std::endl;
    cat::sig_error().connect(handler);
    cat::sig_error().connect(error_slot);
    try {
        eros().clear();
        eros().set_code(0x90000000);
        eros() << "thrown";
        raise_eros();
    } catch (cErr const &) {
        thrown = std::current_exception();
    }
    CHECK(thrown != nullptr);
    stream.connect(other_stream);
    stream << "four" << std::endl;
    target_stream << "waiting";
    text_object = cat::of("text");
    number_object = cat::of(7);
}

} // namespace

int main(int argc, char **) {
    if (argc > 1) {
        use_all();
        return failures != 0;
    }
    cResult const result = run_self("child");
    CHECK(result.status == 0);
    CHECK_TEXT(result.output, QRV_VERSION_TEXT "\noneone\n\ntwo\nthree\nthrown\nfour\n"
                                               "endend\n\nend of static objects\n");
    return failures != 0;
}

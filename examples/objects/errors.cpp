// One operation that fails, and what becomes of it: printed, thrown, or forgiven. Whoever finds an
// error composes it and sends it over a signal; the handler there decides, by masks on the code.
#include "qrv/containers/cattr.h"
#include "qrv/containers/cmapobj.h"
#include "qrv/core/ceros.h"
#include "qrv/core/cobjd.h"
#include "qrv/diagnostics/cconsole.h"

#include <iostream>

namespace {
// The bit of an error that stops an operation, as nearly all of the library's do.
constexpr unsigned int every_error = 0x40000000;

void add_colour(cMapObj &settings) {
    bool const done = settings.setattr(make_key("colour"), cat::of("grey"));
    std::cout << (done ? "done" : "refused") << ", entries: " << settings.size() << '\n';
}
} // namespace

int main() {
    sig_idle();
    cConsoleDisplay display;

    cMapObj settings;
    settings["volume"] = cat::of(7);
    settings.setflags(of_const_keys); // no new keys from here on

    // Printed, if nobody asks for more. The result tells, too.
    add_colour(settings);

    // Thrown, from inside of the operation.
    cat::errhandler().throw_mask(every_error);
    try {
        add_colour(settings);
    } catch (cErr const &error) {
        std::cout << "caught " << std::hex << error.code() << std::dec << '\n';
    }

    // Forgiven: nobody is told, and the caller goes on, though without the key.
    cat::errhandler().throw_mask(0);
    cat::errhandler().silent_mask(every_error);
    cat::errhandler().clear_mask(every_error);
    add_colour(settings);
    return 0;
}

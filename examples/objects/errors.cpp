// One operation that fails; its error is printed, thrown, or forgiven. The function that detects an
// error sends it over a signal; the handler decides what happens, by masks on the error's code.
#include "qrv/containers/cattr.h"
#include "qrv/containers/cmapobj.h"
#include "qrv/core/ceros.h"
#include "qrv/core/cobjd.h"
#include "qrv/diagnostics/cconsole.h"

#include <iostream>

namespace {
// The bit of errors that stop an operation; nearly all errors of the library have it.
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

    // Printed, which is the default. The result shows the failure too.
    add_colour(settings);

    // Thrown, from inside the operation.
    cat::errhandler().throw_mask(every_error);
    try {
        add_colour(settings);
    } catch (cErr const &error) {
        std::cout << "caught " << std::hex << error.code() << std::dec << '\n';
    }

    // Forgiven, and not printed: the caller continues as after a success, but the key is not
    // stored.
    cat::errhandler().throw_mask(0);
    cat::errhandler().silent_mask(every_error);
    cat::errhandler().clear_mask(every_error);
    add_colour(settings);
    return 0;
}

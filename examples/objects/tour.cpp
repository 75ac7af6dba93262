// Reads a device description, changes it, listens to errors, and writes a part of it.
// Usage: tour FILE
#include "qrv/containers/cattr.h"
#include "qrv/containers/cmapobj.h"
#include "qrv/core/ceros.h"
#include "qrv/core/cobjd.h"
#include "qrv/diagnostics/cconsole.h"
#include "qrv/text/file/cfile.h"
#include "qrv/text/write/cwriter.h"

#include <iostream>

namespace {
void seen(cErr &error) { std::cout << "a slot saw: " << error.as_string() << '\n'; }
} // namespace

int main(int argc, char **argv) {
    cat::use_console(); // from here on std::cout and std::cerr are seen

    objref device;
    if (argc != 2 || !file2obj(argv[1], device) || !cObj::is_map(device)) return 2;

    // By key and by path. as_string returns a string's plain value, as_text the text in a file.
    std::cout << "name    " << cat::as_string((*device)["name"]) << '\n';
    std::cout << "manual  " << cat::as_text(device->getattrp("location/manual")) << '\n';

    // A handle consists of an owner and a key. A value that the file shares by #cRef is one object.
    (*device)["limits"]["temperature"]["high"] = cat::of(150);
    std::cout << "sensor  " << cat::as_text(device->getattrp("sensors/0/limits")) << '\n';

    // A failure is a value that travels over a signal; handlers print, throw or forgive it.
    cat::errhandler().silent_mask(0xFFFFFFFF);
    cFunctionSlot1<cErr &, void (*)(cErr &)> slot(&seen, cat::sig_error());
    device->setflags(of_const_keys);
    (*device)["colour"] = cat::of("grey");
    return 0;
}

// Reads a file, changes a few values, and saves it: order, layout, comments and sharing stay.
// Usage: edit FILE   writes edited.attr
#include "qrv/containers/cattr.h"
#include "qrv/core/cobjd.h"
#include "qrv/diagnostics/cconsole.h"
#include "qrv/text/file/cfile.h"
#include "qrv/text/read/cattrscan.h"
#include "qrv/text/write/cexacttext.h"
#include "qrv/text/write/cwriter.h"

#include <fstream>
#include <iostream>

int main(int argc, char **argv) {
    sig_idle();
    cConsoleDisplay display;
    cat::ExactText exact; // every digit that was read is written

    // file2obj would also read the file, but without its comments.
    std::ifstream file(argc == 2 ? argv[1] : "");
    cAttrScan scan(file, true);
    scan.return_com(true);
    objref device;
    if (scan.scan_obj(device, nullptr) != 0 || scan.errcount() != 0) return 2;

    // By handles: `=` stores another object, assign() changes the present one.
    cAttr const bus = (*device)["bus"];
    bus["parity"] = cat::of("even");
    bus["registers"][1]->assign(cat::of("target"));

    // By paths: one value, or a string of statements. `=` changes in place and can create levels.
    device->setattrp("bus/timeout", cat::of(0.1), false);
    device->setattrp("bus/address = 18; bus/gateway/name = rack; bus/gateway/ports = [502, 503]",
                     true);

    // A kill value removes the entry.
    bus["retries"] = cat::badfind();

    if (!write2file(*device, "edited.attr", false)) return 1;
    std::cout << cat::as_text(bus) << '\n';
    return 0;
}

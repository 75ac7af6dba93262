// Numbers with the form in which they are written and read, as views on numbers of the program and
// as objects in a tree; and small functions: wildcards, the stack, the version.
#include "qrv/base/csignal.h"
#include "qrv/containers/cattr.h"
#include "qrv/core/cobj.h"
#include "qrv/core/ctypes.h"
#include "qrv/diagnostics/cconsole.h"
#include "qrv/text/write/cwriter.h"
#include "qrv/util/cfloatformat.h"
#include "qrv/util/cintformat.h"
#include "qrv/util/cintvalf.h"
#include "qrv/util/cmatch.h"
#include "qrv/util/cutil.h"

#include <iostream>
#include <string>

namespace {
int on_no_stack = 0;

char const *shown(bool yes) { return yes ? "yes" : "no"; }
} // namespace

int main() {
    sig_idle();
    cConsoleDisplay display;

    int mask = 5;
    cIntFormat bits(mask, cIntFormat::fmtBin8); // a view: the number stays the program's
    std::cout << "bits    " << bits.str() << '\n';
    for (char const *text : {"0xfe", "b 1 0000 0000", "017", "09"}) {
        bool const taken = bits.set_str(text); // number and form, or neither
        std::cout << "        " << text << ": " << shown(taken) << ", " << mask << " as "
                  << bits.str() << '\n';
    }

    double volts = 1.5;
    cDoubleFormat level(volts, cDoubleFormat::ffScientific, 4);
    bool changed = false;
    level.set_str("230.5", changed);
    std::cout << "volts   " << level.str() << ", changed: " << shown(changed) << '\n';

    objref device;
    cObj::readobj("{port= intf(0x1F); }", device);
    device->setattrp("port = 255", false); // the number changes, its form stays
    (*device)["mode"] = make<cIntValF>(8, cIntFormat::fmtOct);
    std::cout << "object  " << cat::as_text(device) << '\n';

    // The length that the pattern matches: the longest match, or the first alternative that
    // matches.
    std::cout << "match   " << cMatch("abcabc", "a*c", false) << ' '
              << cMatch("abcabc", "a*c", true) << '\n';
    std::cout << "stack   " << shown(cIsOnStack(&mask)) << ' ' << shown(cIsOnStack(&on_no_stack))
              << '\n';
    std::cout << "version " << cversionstring() << '\n';
    return 0;
}

// A choice type that a program creates: an enumeration whose values are positions in a map that can
// change during their lifetime. A machine's mode is such a value; when the modes of the machine are
// replaced or removed, the mode follows.
// Usage: choice
#include "qrv/containers/cattr.h"
#include "qrv/containers/cchoiceval.h"
#include "qrv/containers/cmapobj.h"
#include "qrv/core/cmodifier.h"
#include "qrv/core/cobjd.h"
#include "qrv/diagnostics/cconsole.h"
#include "qrv/text/write/cwriter.h"

#include <iostream>

namespace {
void show(char const *what, objref const &machine) {
    cAttr const mode(machine, "mode");
    std::cout << what << cat::as_text(machine) << "  place " << cat::as_text(mode["pos"])
              << ", value " << cat::as_text(mode["value"]) << '\n';
}
} // namespace

int main() {
    sig_idle();              // discards the start-up text
    cConsoleDisplay display; // from here on, std::cout and std::cerr are shown

    // The type holds the choices; once registered, it can be named in text.
    auto const type = make<cTypeObj>(&cat::typetype_choice(), "Mode", nullptr);
    cTypeInsert const insert(*type);
    objref modes, machine, fewer;
    cObj::readobj("{ off=0; slow=10; fast=50; }", modes);
    (*type)["choices"] = modes;

    // A value is a key of the choices. Any other key changes nothing.
    cObj::readobj("{ mode= Mode(slow); }", machine);
    show("read     ", machine);
    *(*machine)["mode"] = *cat::of("fast");
    *(*machine)["mode"] = *cat::of("no such mode");
    show("assigned ", machine);

    // Changes through the type update its values: each gets the choice with its key, or else the
    // first choice.
    (*type)["fast"] = cat::of(60);
    show("changed  ", machine);
    cObj::readobj("{ fast=55; off=0; }", fewer);
    (*type)["choices"] = fewer;
    show("replaced ", machine);
    (*type)["fast"] = cat::badfind();
    show("removed  ", machine);
    return 0;
}

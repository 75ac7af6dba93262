// Watches the objects of a tree. Any object can have a signal `changed`, made when somebody asks
// for it: whoever is done with changing the object fires it, and all that is connected gets to
// know.
#include "qrv/containers/cattr.h"
#include "qrv/containers/citerobj.h"
#include "qrv/containers/csignalobj.h"
#include "qrv/core/cobjd.h"
#include "qrv/diagnostics/cconsole.h"
#include "qrv/text/write/cwriter.h"

#include <iostream>

namespace {
// What the slots call, each with its target.
bool show(cObj &obj) {
    std::cout << "  now " << cat::as_text(objref::share(&obj)) << '\n';
    return true;
}

// From here on a change of any map below is a change of this one too: signals call signals.
void tell_upwards(cObj &map) {
    for (cIterObj it = map.begin(); it.valid(); ++it) {
        if (!it->is_map()) continue;
        it->force_changed_signal().connect(map.force_changed_signal());
        tell_upwards(*it);
    }
}
} // namespace

int main() {
    sig_idle();              // the start-up text has no reader and goes
    cConsoleDisplay display; // from here on std::cout is seen

    objref house;
    cObj::readobj("{attic= {heat= 9; }; cellar= {heat= 6; boiler= {bar= 1.5; }; }; }", house);
    objref const cellar = (*house)["cellar"], boiler = (*cellar)["boiler"];

    {
        std::cout << "Writing tells nobody; changed() does, once for all that was written.\n";
        cObjSlot const watch(*boiler, show, boiler->force_changed_signal());
        (*boiler)["bar"] = cat::of(1.75);
        (*boiler)["pump"] = cat::of(true);
        boiler->changed();
    } // a slot is disconnected by its end

    std::cout << "One slot at the top hears of every change below.\n";
    tell_upwards(*house);
    cObjSlot const watch_all(*house, show, house->force_changed_signal());
    (*cellar)["heat"] = cat::of(7);
    cellar->changed();
    (*boiler)["pump"] = cat::of(false);
    boiler->changed();
    return 0;
}

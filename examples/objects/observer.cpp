// Watches the objects of a tree. Any object can have a signal `changed`, which is created on first
// use. The code that has changed an object fires the signal, which calls all connected slots.
#include "qrv/containers/cattr.h"
#include "qrv/containers/citerobj.h"
#include "qrv/containers/csignalobj.h"
#include "qrv/core/cobjd.h"
#include "qrv/diagnostics/cconsole.h"
#include "qrv/text/write/cwriter.h"

#include <iostream>

namespace {
// The slots call this, each with its object.
bool show(cObj &obj) {
    std::cout << "  now " << cat::as_text(objref::share(&obj)) << '\n';
    return true;
}

// Connects the signal of each map below to that of the map around it, so that changes are reported
// upwards.
void connect_upwards(cObj &map) {
    for (cIterObj it = map.begin(); it.valid(); ++it) {
        if (!it->is_map()) continue;
        it->force_changed_signal().connect(map.force_changed_signal());
        connect_upwards(*it);
    }
}
} // namespace

int main() {
    sig_idle();              // discards the start-up text
    cConsoleDisplay display; // from here on, std::cout is shown

    objref house;
    cObj::readobj("{attic= {heat= 9; }; cellar= {heat= 6; boiler= {bar= 1.5; }; }; }", house);
    objref const cellar = (*house)["cellar"], boiler = (*cellar)["boiler"];

    {
        std::cout << "Storing values fires no signal; changed() then fires it once.\n";
        cObjSlot const watch(*boiler, show, boiler->force_changed_signal());
        (*boiler)["bar"] = cat::of(1.75);
        (*boiler)["pump"] = cat::of(true);
        boiler->changed();
    } // the destructor of a slot disconnects it

    std::cout << "One slot at the top is called for every change below.\n";
    connect_upwards(*house);
    cObjSlot const watch_all(*house, show, house->force_changed_signal());
    (*cellar)["heat"] = cat::of(7);
    cellar->changed();
    (*boiler)["pump"] = cat::of(false);
    boiler->changed();
    return 0;
}

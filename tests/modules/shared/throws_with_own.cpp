// A module with a module object and a thing, whose setup function throws the first two times.
#include "qrv/diagnostics/cerr.h"
#include "tests/modules/shared/module.h"

namespace {
cModule own("own of the thrower", "", false);
EnteredThing const thing("thing of the thrower", 11);
int set_ups = 0;
} // namespace

QRV_SET_UP {
    if (++set_ups <= 2) throw cErr(0x40000007, "not yet");
    note(own.basename() + " is set up");
}

// A module whose setup function throws an error of the library, but only the first time.
#include "qrv/diagnostics/cerr.h"
#include "tests/modules/shared/module.h"

namespace {
bool thrown = false;
}

QRV_SET_UP {
    if (thrown) return note("throws_once is set up");
    thrown = true;
    throw cErr(0x40000007, "not the first time");
}

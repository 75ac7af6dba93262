// A module that loads mutual_b, which loads this one.
#include "tests/modules/shared/module.h"

namespace {
EnteredThing const thing("thing a");
}

QRV_SET_UP {
    note("a begins");
    note(cModule::load("mutual_b") ? "a has b" : "a has no b");
}

// A module that loads mutual_a, which loads this one.
#include "tests/modules/shared/module.h"

namespace {
EnteredThing const thing("thing b");
}

QRV_SET_UP {
    note("b begins");
    note(cModule::load("mutual_a") ? "b has a" : "b has no a");
}

// A module that calls a function that does not exist.
#include "tests/modules/shared/module.h"

extern "C" void a_function_that_is_nowhere();

namespace {
EnteredThing const thing("never entered");
}

QRV_SET_UP { a_function_that_is_nowhere(); }

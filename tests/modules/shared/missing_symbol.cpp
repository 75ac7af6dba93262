// Calls a function that is not defined anywhere.
#include "tests/modules/shared/module.h"

extern "C" void a_function_that_is_nowhere();

namespace {
EnteredThing const thing("never entered");
}

QRV_SET_UP { a_function_that_is_nowhere(); }

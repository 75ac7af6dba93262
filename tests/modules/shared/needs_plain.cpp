// A module without a setup function that is linked with a file that has one.
#include "tests/modules/shared/module.h"

namespace {
EnteredThing const thing("needing thing", 5);
}

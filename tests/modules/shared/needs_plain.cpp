// Has no setup function, but is linked with a file that has one.
#include "tests/modules/shared/module.h"

namespace {
EnteredThing const thing("needing thing", 5);
}

// A module without a setup function.
#include "tests/modules/shared/module.h"

namespace {
Mortal const mortal("bare");
EnteredThing const thing("bare thing", 4);
} // namespace

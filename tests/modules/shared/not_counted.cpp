// Has a module object that isn't counted, so the file is never unloaded.
#include "tests/modules/shared/module.h"

namespace {
cModule own("not counted itself", "", true);
EnteredThing const thing("lasting thing", 9);
} // namespace

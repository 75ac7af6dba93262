// A module with a module object that is not counted, so the file is never unloaded.
#include "tests/modules/shared/module.h"

namespace {
cModule own("not counted itself", "", true);
EnteredThing const thing("lasting thing", 9);
} // namespace

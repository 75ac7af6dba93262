// A module that keeps itself in use, so it is never unloaded.
#include "tests/modules/shared/module.h"

namespace {
cModule own("holds_use", "", false);
cModuleUse const use(own);
} // namespace

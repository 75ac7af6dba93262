// Keeps itself in use as long as it is loaded.
#include "tests/modules/shared/module.h"

namespace {
cModule own("holds_use", "", false);
cModuleUse const use(own);
} // namespace

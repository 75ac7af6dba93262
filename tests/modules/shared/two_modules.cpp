// Two module objects in one file.
#include "tests/modules/shared/module.h"

namespace {
cModule first("the first", "", false);
cModule second("the second", "", false);
} // namespace

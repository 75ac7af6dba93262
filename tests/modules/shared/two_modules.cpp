// A module with two module objects.
#include "tests/modules/shared/module.h"

namespace {
cModule first("the first", "", false);
cModule second("the second", "", false);
} // namespace

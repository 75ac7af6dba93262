// A module whose static initialisation loads another module: it searches for "name:module".
#include "tests/modules/shared/module.h"

namespace {
EnteredThing const before("before", 1);
bool const found = cRepoImpl::find(things(), "plain thing:plain") != nullptr;
EnteredThing const after(found ? "after" : "not found", 2);
} // namespace

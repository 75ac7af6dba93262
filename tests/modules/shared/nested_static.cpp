// A module whose static initialisation loads another module, by a reference to one of its things.
#include "tests/modules/shared/module.h"

namespace {
EnteredThing const before("before", 1);
bool const found = cRepoImpl::find(things(), "plain thing:plain") != nullptr;
EnteredThing const after(found ? "after" : "not found", 2);
} // namespace

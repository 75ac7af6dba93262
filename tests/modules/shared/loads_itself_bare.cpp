// A module that tries to load itself when it is unloaded. It has no module object.
#include "tests/modules/shared/module.h"

namespace {
struct Last {
    Last() = default;
    Last(Last const &) = delete;
    Last &operator=(Last const &) = delete;
    ~Last() { note(cModule::load("loads_itself_bare") ? "loaded" : cModule::last_error()); }
} const last;
} // namespace

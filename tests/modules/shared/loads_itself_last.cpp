// When this module is unloaded, it tries to load itself under several names, and another module. It
// has a module object.
#include "tests/modules/shared/module.h"

namespace {

cModule own("own of the last", "", false);

void try_to_load(char const *name) {
    note(cModule::load(name) ? std::string(name) + " is loaded" : cModule::last_error());
}

struct Last {
    Last() = default;
    Last(Last const &) = delete;
    Last &operator=(Last const &) = delete;
    ~Last() {
        for (char const *name : {"loads_itself_last", "sub/loads_itself_last", "./alias", "plain"})
            try_to_load(name);
        note(cModule::load("own of the last") ? "its own name is loaded" : "its own name is not");
    }
} const last;

} // namespace

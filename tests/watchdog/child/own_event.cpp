// Gives the event the name that the variable QRV_TEST_EVENT tells, for a program with the library's
// objects linked in. The library opens the event while it is initialised, so this runs before all
// initialisers, and touches nothing that needs one.

#include "base/platform/os_calls.h"

#include <cstdlib>

namespace {

constinit decltype(cat::os_calls::sem_open) real_sem_open = nullptr;

sem_t *open_own(char const *name) {
    char const *const own = std::getenv("QRV_TEST_EVENT");
    return real_sem_open(own ? own : name);
}

__attribute__((constructor(101))) void rename_event() {
    real_sem_open = cat::os.sem_open;
    cat::os.sem_open = open_own;
}

} // namespace

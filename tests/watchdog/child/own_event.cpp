// Replaces the event's name by the value of QRV_TEST_EVENT, in a program linked with the library's
// objects. The library opens the event during static initialisation, so this code runs before all
// initialisers, and uses nothing that an initialiser creates.

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

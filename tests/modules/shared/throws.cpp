// A module whose setup function throws an exception of a type that only this file knows, with an
// entry on the stack.
#include "tests/modules/shared/module.h"

#include <stdexcept>

namespace {
struct OwnError : std::runtime_error {
    using std::runtime_error::runtime_error;
};
} // namespace

QRV_SET_UP {
    EnteredThing const thing("short-lived");
    throw OwnError("set-up of throws");
}

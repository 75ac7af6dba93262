// A module whose setup function has an entered thing on the stack and throws an exception of a type
// that only this file knows.
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

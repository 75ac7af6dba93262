// Has only a setup function; a static object releases its entry.
#include "tests/modules/shared/module.h"

#include <optional>

namespace {
Mortal const mortal("plain");
std::optional<EnteredThing> thing;
} // namespace

QRV_SET_UP {
    note("plain is set up");
    thing.emplace("plain thing", 7);
}

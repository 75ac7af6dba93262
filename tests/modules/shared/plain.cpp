// A module with a setup function, which creates an entry, and a static object that releases it.
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

// A module whose setup function creates an entry, loads another module, and creates a second entry.
#include "tests/modules/shared/module.h"

#include <optional>

namespace {
Mortal const mortal("nested");
std::optional<EnteredThing> before, after;
} // namespace

QRV_SET_UP {
    before.emplace("before", 1);
    note(cModule::load("plain") ? "nested has loaded plain" : cModule::last_error());
    after.emplace("after", 2);
}

// Loads another module in its setup function, between two entries of this module.
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

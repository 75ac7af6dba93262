// A module that loads another one, catches the exception of its setup function, and stays loaded.
#include "tests/modules/shared/module.h"

#include <optional>
#include <stdexcept>

namespace {
std::optional<EnteredThing> after;
}

QRV_SET_UP {
    try {
        cModule::load("throws");
    } catch (std::runtime_error const &error) {
        note(error.what());
    }
    after.emplace("after", 6);
}

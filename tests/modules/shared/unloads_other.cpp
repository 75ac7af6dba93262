// A module that loads another one. When it is unloaded, it unloads the other one and tries to
// unload itself.
#include "tests/modules/shared/module.h"

namespace {

cModule own("unloads_other", "", false);
cModule *other = nullptr;

struct Last {
    Last() = default;
    Last(Last const &) = delete;
    Last &operator=(Last const &) = delete;
    ~Last() {
        note(other && other->unload() ? "other unloaded" : "other not unloaded");
        note(own.unload() ? "itself unloaded" : "itself not unloaded");
    }
} const last;

} // namespace

QRV_SET_UP { other = cModule::load("leaves"); }

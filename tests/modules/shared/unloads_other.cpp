// Loads another module and unloads it when it is unloaded; also tries to unload and to load itself
// then.
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

// A module that creates and releases entries while it is loaded, also of a module object. One entry
// remains.
#include "tests/modules/shared/module.h"

namespace {
bool come_and_go(char const *name) {
    EnteredThing const thing(name);
    cModule const module(name, "", false);
    return true;
}
bool const in_static_code = come_and_go("static");
EnteredThing const thing("stays", 3);
} // namespace

QRV_SET_UP { come_and_go("set-up"); }

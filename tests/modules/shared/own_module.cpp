// A module with a module object whose name is not the file's. The setup function logs the state of
// this object.
#include "tests/modules/shared/module.h"

namespace {
Mortal const mortal("own_module");
cModule own("a name of its own", "its own comment", false);
EnteredThing const thing("own thing", 8);
} // namespace

QRV_SET_UP {
    note("own_module is set up");
    if (own.basename() != "own_module") note("wrong base name");
    if (own.handle() || own.canunload()) note("loaded already");
}

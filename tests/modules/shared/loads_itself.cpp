// A module that loads itself, in its static initialisation and in its setup function.
#include "tests/modules/shared/module.h"

namespace {
cModule own("itself", "", false);
bool const loaded = cModule::load("loads_itself") || cModule::load("./loads_itself") ||
                    cRepoImpl::find(things(), "nothing:loads_itself");
} // namespace

QRV_SET_UP {
    note(loaded ? "loaded in static code" : "not in static code");
    note(cModule::load("loads_itself") ? "loaded in the set-up" : cModule::last_error());
}

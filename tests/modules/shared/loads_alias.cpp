// A module that loads its own file under another name.
#include "tests/modules/shared/module.h"

QRV_SET_UP { note(cModule::load("alias") ? "alias loaded" : cModule::last_error()); }

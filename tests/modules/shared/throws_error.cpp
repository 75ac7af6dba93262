// A module whose setup function throws an error of the library.
#include "tests/modules/shared/module.h"

#include "qrv/diagnostics/cerr.h"

QRV_SET_UP { throw cErr(0x40001234U, "set-up of throws_error"); }

#pragma once
// The version of the library.

#include "qrv/ccomp.h"

#define QRV_VERSION "1.0.0"
#define QRV_VERSION_TEXT "Quorvanta v" QRV_VERSION "\nby the Quorvanta developers"

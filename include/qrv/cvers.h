#pragma once
// The version, in this one place.

#include "qrv/ccomp.h"

#define QRV_VERSION "1.0.0"
#define QRV_VERSION_TEXT "Quorvanta v" QRV_VERSION "\nby the Quorvanta developers"

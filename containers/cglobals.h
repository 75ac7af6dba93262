#pragma once
// Fills the map of global members and the map of constants, for the bootstrap.

#include "qrv/qrvdefs.h"

namespace cat {
void fill_gmmap(cAttrHash &members);
void fill_constmap(cAttrHash &constants);
} // namespace cat

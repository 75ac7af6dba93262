#pragma once
// Types that are declared again.

#include "qrv/core/ctypeobj.h"

namespace cat {

// Registers a type, or redefines the registered one of its name by cTypeObj::update_from. Shares
// the type if it is new, else borrows it. False, or cErr(1) thrown with `fatal`, if the name
// belongs to a type of another metatype. RUNS FOREIGN CODE
QRV_API bool set_type(cTypeObj const &type, bool fatal);

} // namespace cat

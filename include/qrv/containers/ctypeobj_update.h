#pragma once
// Types that are declared again.

#include "qrv/core/ctypeobj.h"

#include <string>

namespace cat {

// Registers a type, or redefines the registered one of its name by cTypeObj::update_from. Shares
// the type if it is new, else borrows it. False, or cErr(1) thrown with `fatal`, if the name
// belongs to a type of another metatype. RUNS USER CODE
QRV_API bool set_type(cTypeObj const &type, bool fatal);

// The same for a type that text declares: while a cat::TypeScope lives, the innermost one registers
// it. Without `fatal`; `former` is the name that the type had before the declaration.
// RUNS USER CODE
QRV_API bool declare_type(cTypeObj &type, std::string const &former);

} // namespace cat

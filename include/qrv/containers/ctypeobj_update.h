#pragma once
// Declaring an existing type again.

#include "qrv/core/ctypeobj.h"

#include <string>

namespace cat {

// Registers a type, or redefines the registered one of its name by cTypeObj::update_from. Shares a
// new type, borrows it otherwise. If the name belongs to a type of another metatype: false, or with
// `fatal` throws cErr(1). RUNS USER CODE
QRV_API bool set_type(cTypeObj const &type, bool fatal);

// The same for a type that text declares: inside a cat::TypeScope, the innermost one registers it.
// Never fatal. `former` is the name that the type had before the declaration. RUNS USER CODE
QRV_API bool declare_type(cTypeObj &type, std::string const &former);

} // namespace cat

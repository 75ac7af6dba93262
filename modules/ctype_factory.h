#pragma once
// What cat::find_type asks for a type that is not registered.

#include "qrv/core/ctypeobj.h"

#include <string>

namespace cat {
// The type that the factory of that name creates; a colon in the name loads the module after it.
// Null if there is no factory, or it created nothing.
typeref make_type(std::string const &name);
} // namespace cat

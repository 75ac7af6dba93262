#pragma once
// The function that cat::find_type calls for a type that is not registered.

#include "qrv/core/ctypeobj.h"

#include <string>

namespace cat {
// The type that the factory of that name creates; for a name with a colon it loads the module after
// the colon. Null if the factory does not exist or creates nothing.
typeref make_type(std::string const &name);
} // namespace cat

#pragma once
// The rules of the registry of types. They hold after every registration, redefinition, inheritance
// and removal by programs, modules and files.
//
// G1 the hash keeps its own rules, and cat::typemap() shares it
// G2 each value is a type
// G3 each key is its type's name; an alias is allowed if the type is also registered by its name
// G4 the built-in types are registered by their names
// G5 from each type the chain of types of types ends at "type", which is its own type
// G6 the method table holds, for each standard method, the function of the member of that name
// G7 the key hooks: both or none
// G8 a type of the metatype "attlist" has a map of specifications
//
// Not checked, since it cannot be: whether the code of a function is still loaded, and whether the
// source type of a converter still exists, of which only the address is stored.

#include "qrv/ccomp.h"

#include <string>

namespace cat {
// The first broken rule, as "G3 key=...", or an empty string. RUNS USER CODE: hooks of key types.
// O(types * members)
QRV_API std::string broken_registry_rule();
} // namespace cat

#pragma once
// The rules that the registry of types keeps whatever programs, modules and files register,
// redefine, inherit and take away.
//
// G1 the hash keeps its own rules, and cat::typemap() shares it
// G2 each value is a type
// G3 each key is its type's name; an alias is allowed, if the type also stands under its name
// G4 the built-in types stand under their names
// G5 from each type the chain of types of types ends at "type", which is its own type
// G6 the method table holds, for each standard method, the function of the member of that name
// G7 the key hooks: both or none
// G8 a type of the metatype "attlist" has a map of specifications
//
// What no look can tell: whether the code behind a function is still loaded, and whether the source
// of a converter lives, which is known by its address only.

#include "qrv/ccomp.h"

#include <string>

namespace cat {
// The first broken rule, as "G3 key=...", or an empty text. Calls the hooks of key types.
// O(types * members)
QRV_API std::string broken_registry_rule();
} // namespace cat

#pragma once
// Types that are kept alive only by each other after the end of their scope.
//
// A declaration may name its own type, or hold an object of it as a default: then reference
// counting never frees the type. When the scope of such types ends, they are remembered here. They
// are destroyed as soon as all their owners and objects are held by the types themselves.

#include "qrv/core/ctypeobj.h"

#include <vector>

namespace cat {

// Remembers the types in `left` that can be reached from themselves, empties `left`, and destroys
// the remembered types that are not used elsewhere. RUNS USER CODE
void free_types(std::vector<typeref> &left);
// For the tear-down: clears the members of the remembered types, which breaks all cycles. A program
// that still holds such a type may release it, but not use it. RUNS USER CODE
void cut_type_cycles();

} // namespace cat

#pragma once
// Types that have left their scope and keep each other alive.
//
// A declaration may name its own type, or hold an object of it as a default: then counting alone
// never frees the type. Such types are remembered here when they leave, and destroyed as soon as
// all their owners and objects are parts of what they hold themselves.

#include "qrv/core/ctypeobj.h"

#include <vector>

namespace cat {

// Remembers those of the types that can be reached from themselves, releases them all, empties
// `left`, and destroys the remembered types that nothing else needs. RUNS USER CODE
void free_types(std::vector<typeref> &left);
// Tear-down: the remembered types lose their members, so that no cycle is left. What a program
// still holds of them can be dropped, but not used. RUNS USER CODE
void cut_type_cycles();

} // namespace cat

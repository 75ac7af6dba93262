#pragma once
// The table of text functions: see core/ctext_hooks.h.

#include "qrv/core/cexe.h"

namespace cat {
// Fills text_hooks. May be called at any time and any number of times.
void install_text() noexcept;

// Whether the type's method `read` is a function of the library that only reads characters from its
// stream. For types that aren't containers.
bool is_read_by_library(cTypeObj const &type) noexcept;
// The method `read` of the type "intf" is such a function, but belongs to a higher layer. Null
// until that type is created.
extern constinit cProcedure2 read_intf;
} // namespace cat

#pragma once
// The table of texts: see core/ctext_hooks.h.

#include "qrv/core/cexe.h"

namespace cat {
// Fills text_hooks. May be called at any time and any number of times.
void install_text() noexcept;

// Is the method `read` of the type a function of the library, which asks its stream for characters
// and no more? Of the types that aren't containers.
bool is_read_by_library(cTypeObj const &type) noexcept;
// Such a function of a layer above; null until its type is set up.
extern constinit cProcedure2 read_intf;
} // namespace cat

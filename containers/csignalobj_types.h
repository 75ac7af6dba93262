#pragma once
// For the tear-down of the core.

#include "qrv/qrvdefs.h"

namespace cat {
// Is it one of the types of signals and slots that the library holds?
bool is_signal_type(cObj const *type);
// Releases them, in the registry too; the next use creates them again. True if there were any.
// RUNS USER CODE: members that a program gave them.
bool drop_signal_types();
} // namespace cat

#pragma once
// What the bootstrap adds to the scalar types after all of them exist.

#include "qrv/core/ctypeobj.h"

namespace cat {
void set_scalar_additions(); // "add", and the "size" of a string
void set_scalar_converters();
// The method "assign" of int, for types that stand on it: the same type, else by converter.
bool assign_int(cObj &obj, objref &source);
// Exactly the library's string, int or bool, and no program has given it an "equal" of its own: two
// objects are equal when their values are, and comparing them runs no foreign code.
bool compares_plainly(cTypeObj const &type) noexcept;
} // namespace cat

#pragma once
// What the bootstrap adds to the scalar types after all of them exist.

namespace cat {
void set_scalar_additions(); // "add", and the "size" of a string
void set_scalar_converters();
} // namespace cat

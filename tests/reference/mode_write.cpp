#include "tests/reference/world.h"
namespace reference {
void write_mode() {}
} // namespace reference

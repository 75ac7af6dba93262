#include "tests/reference/world.h"
namespace reference {
void copy_mode() {}
} // namespace reference

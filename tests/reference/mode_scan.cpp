#include "tests/reference/world.h"
namespace reference {
void scan_mode() {}
} // namespace reference

#include "tests/reference/world.h"
namespace reference {
void hash_mode() {}
} // namespace reference

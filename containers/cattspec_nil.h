#pragma once
// For the tear-down of the core.

namespace cat {
void drop_nilspec();
} // namespace cat

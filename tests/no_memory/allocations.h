#pragma once
// The global allocation functions of this program, which can be made to fail after a number of
// calls.

namespace no_memory {

constexpr long endless = 1000000000;
extern long allocations_left; // unlimited at first

} // namespace no_memory

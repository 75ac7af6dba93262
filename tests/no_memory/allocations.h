#pragma once
// The global allocation functions of this program, which fail after a number of calls.

namespace no_memory {

constexpr long endless = 1000000000;
extern long allocations_left; // endless at first

} // namespace no_memory

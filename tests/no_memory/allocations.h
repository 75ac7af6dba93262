#pragma once
// The global allocation functions of this program fail once `allocations_left` is 0.

namespace no_memory {

constexpr long unlimited = 1000000000;
extern long allocations_left; // `unlimited` at first

} // namespace no_memory

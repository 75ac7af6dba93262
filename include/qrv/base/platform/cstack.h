#pragma once
// The bounds of the running thread's stack, and the part that is left. Functions that recurse into
// nested data (comparing, copying, reading, writing) check this before each level. They fail with
// an error before the stack is exhausted, so deeply nested data cannot end the process. The bounds
// are queried once for each thread.

#include "qrv/ccomp.h"

#include <cstddef>

namespace cat {

// If less than this many bytes are left, recursion stops. The reserve is for everything that the
// last level calls: user methods, error texts, message slots. For a thread with a stack below 1
// MiB, the reserve is half of the stack.
constexpr std::size_t stack_reserve = 512 * 1024;

// Bytes between the caller's frame and the end of its thread's stack.
QRV_API std::size_t stack_left() noexcept;

// Whether less than the reserve is left: stack_reserve bytes, or half of a small stack.
QRV_API bool stack_low() noexcept;

// The address at which the running thread's stack begins, above all its frames. If the system does
// not report it, the address for the main thread.
QRV_API void const *stack_end() noexcept;

} // namespace cat

#pragma once
// The bounds of the running thread's stack, and the part that is left. Walks that recurse with
// their data (comparing, copying, reading, writing) check this before each level and fail in time
// with an error, so that deeply nested data cannot end the process. The bounds are queried once for
// each thread.

#include "qrv/ccomp.h"

#include <cstddef>

namespace cat {

// Below this many bytes a walk descends no further: everything that a level still calls (user
// methods, error texts, message slots) must fit in. For a thread with a stack below 1 MiB, the
// reserve is half of the stack.
constexpr std::size_t stack_reserve = 512 * 1024;

// Bytes between the caller's frame and the end of its thread's stack.
QRV_API std::size_t stack_left() noexcept;

// Whether less than the reserve is left: stack_reserve bytes, or half of a small stack.
QRV_API bool stack_low() noexcept;

// The address at which the running thread's stack began, above all its frames; that of the main
// thread if the system does not report it.
QRV_API void const *stack_end() noexcept;

} // namespace cat

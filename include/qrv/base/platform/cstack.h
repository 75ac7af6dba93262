#pragma once
// The bounds of the running thread's stack, and how much of it is left. Walks that recurse with
// their data (comparing, copying, reading, writing) ask here before each level and give up softly
// in time, so that no value, however deep, can end the process. The bounds of a thread are asked
// once.

#include "qrv/ccomp.h"

#include <cstddef>

namespace cat {

// Below this many bytes a walk goes no deeper: what a level still calls (foreign methods, error
// texts, message slots) must fit in. Half of the stack, for a thread with a stack below 1 MiB.
constexpr std::size_t stack_reserve = 512 * 1024;

// Bytes between the caller's frame and the end of its thread's stack.
QRV_API std::size_t stack_left() noexcept;

QRV_API bool stack_low() noexcept;

// The end at which the running thread's stack began, above all its frames. Where the system doesn't
// tell, that of the main thread.
QRV_API void const *stack_end() noexcept;

} // namespace cat

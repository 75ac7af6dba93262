// The stack of the running thread: bounds by pthread, asked once for each thread and kept.
//
// A thread's lowest address is fixed for its life. For the main thread it comes from the limit at
// the time of asking, which the system honours by growing the stack on demand.

#include "qrv/platform/cstack.h"

#include <pthread.h>

#include <cstdint>

namespace {

// Where the bounds can't be told the answer is one that never stops a walk.
std::uintptr_t lowest_address() noexcept {
    pthread_attr_t attributes;
    if (pthread_getattr_np(pthread_self(), &attributes) != 0) return 1;
    void *address = nullptr;
    std::size_t size = 0;
    bool const known = pthread_attr_getstack(&attributes, &address, &size) == 0;
    pthread_attr_destroy(&attributes);
    return known ? reinterpret_cast<std::uintptr_t>(address) : 1;
}

constinit thread_local std::uintptr_t lowest = 0; // 0: not asked yet

} // namespace

std::size_t cat::stack_left() noexcept {
    if (lowest == 0) lowest = lowest_address();
    auto const here = reinterpret_cast<std::uintptr_t>(__builtin_frame_address(0));
    return here > lowest ? here - lowest : 0;
}

// The stack of the running thread: pthread reports the bounds, once for each thread.
//
// The lowest address of a thread's stack never changes. For the main thread it is computed from the
// limit at the time of the query; the system grows the stack on demand up to that limit.

#include "qrv/base/platform/cstack.h"

#include "base/platform/os_calls.h"

#include <algorithm>
#include <cstdint>

extern "C" void *__libc_stack_end; // near the main thread's high end, set by the system's loader

namespace {

struct cBounds {
    std::uintptr_t lowest; // 0 if not queried yet
    std::uintptr_t end;
    std::size_t reserve;
};

constinit thread_local cBounds bounds{0, 0, 0};

// Used if the real bounds can't be queried. With these, stack_low() is always false.
cBounds unknown() noexcept { return {1, reinterpret_cast<std::uintptr_t>(__libc_stack_end), 0}; }

cBounds ask() noexcept {
    pthread_attr_t attributes;
    if (cat::os.stack(pthread_self(), &attributes) != 0) return unknown();
    void *address = nullptr;
    std::size_t size = 0;
    bool const known = pthread_attr_getstack(&attributes, &address, &size) == 0;
    pthread_attr_destroy(&attributes);
    if (!known) return unknown();
    auto const lowest = reinterpret_cast<std::uintptr_t>(address);
    return {lowest, lowest + size, std::min(cat::stack_reserve, size / 2)};
}

} // namespace

std::size_t cat::stack_left() noexcept {
    if (bounds.lowest == 0) bounds = ask();
    auto const here = reinterpret_cast<std::uintptr_t>(__builtin_frame_address(0));
    return here > bounds.lowest ? here - bounds.lowest : 0;
}

bool cat::stack_low() noexcept { return stack_left() < bounds.reserve; }

void const *cat::stack_end() noexcept {
    if (bounds.lowest == 0) bounds = ask();
    return reinterpret_cast<void const *>(bounds.end);
}

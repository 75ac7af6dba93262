#pragma once
// The rule of cIsOnStack, apart from the addresses of a running program.

#include <cstdint>

namespace cat {

// Is `p` on the stretch from `here` to `base`? The limit on the side of `here` is exclusive, on the
// side of `base` inclusive, whichever is the higher.
constexpr bool stack_holds(std::uintptr_t p, std::uintptr_t here, std::uintptr_t base) {
    return here >= base ? p < here && p >= base : p > here && p <= base;
}

} // namespace cat

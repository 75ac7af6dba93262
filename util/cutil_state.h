#pragma once
// The rule of cIsOnStack, without the addresses of a running program.

#include <cstdint>

namespace cat {

// Whether `p` is between `here` and `base`. Excludes `here` and includes `base`, whichever of the
// two is the higher address.
constexpr bool stack_holds(std::uintptr_t p, std::uintptr_t here, std::uintptr_t base) {
    return here >= base ? p < here && p >= base : p > here && p <= base;
}

} // namespace cat

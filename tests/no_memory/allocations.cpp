// These operators are in a separate file: if g++ sees how they call malloc() and free(), it warns
// that free() gets memory from new.
#include "tests/no_memory/allocations.h"

#include <cstdlib>
#include <new>

constinit long no_memory::allocations_left = no_memory::unlimited;

void *operator new(std::size_t size) {
    for (;;) {
        if (no_memory::allocations_left > 0)
            if (void *const memory = std::malloc(size ? size : 1)) {
                --no_memory::allocations_left;
                return memory;
            }
        std::new_handler const handler = std::get_new_handler();
        if (!handler) throw std::bad_alloc();
        handler();
    }
}
void *operator new(std::size_t size, std::nothrow_t const &) noexcept {
    return operator new(size); // the tool's handler does not return
}
void operator delete(void *memory) noexcept { std::free(memory); }
void operator delete(void *memory, std::size_t) noexcept { std::free(memory); }

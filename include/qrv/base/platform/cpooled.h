#pragma once
// Where `new` finds the memory of objects, hash nodes and hashes: in the library's pool, wherever
// the class that is made was compiled. Memory of more than 256 bytes, or for classes that need more
// than the default alignment, comes from the global operators; so do arrays. In debug builds
// everything does, so that the tools that watch the heap see each object. Rules:
// base/platform/cpool.h.
//
// For programs: an object made by the global `new` is not the pool's and must not be left to the
// library's handles, whose `delete` gives it to the pool. A class that also inherits operators of
// another base says with a using-declaration which ones it takes.

#include "qrv/ccomp.h"

#include <cstddef>
#include <new>

class QRV_API cPooled {
  public:
    static void *operator new(std::size_t size);
    static void *operator new(std::size_t size, std::nothrow_t const &) noexcept;
    static void *operator new(std::size_t, void *place) noexcept { return place; }
    static void operator delete(void *memory, std::size_t size) noexcept;
    // For constructors that throw.
    static void operator delete(void *memory, std::nothrow_t const &) noexcept;
    static void operator delete(void *, void *) noexcept {}

    // Classes of more than the default alignment.
    static void *operator new(std::size_t size, std::align_val_t alignment) {
        return ::operator new(size, alignment);
    }
    static void *operator new(std::size_t size, std::align_val_t alignment,
                              std::nothrow_t const &nothrow) noexcept {
        return ::operator new(size, alignment, nothrow);
    }
    static void operator delete(void *memory, std::align_val_t alignment) noexcept {
        ::operator delete(memory, alignment);
    }
    static void operator delete(void *memory, std::align_val_t alignment,
                                std::nothrow_t const &) noexcept {
        ::operator delete(memory, alignment);
    }
};

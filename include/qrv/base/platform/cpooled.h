#pragma once
// The allocation of objects, hash nodes and hashes: `new` uses the library's pool, also for classes
// that a program defines. Memory of more than 256 bytes, for arrays, or for classes that need more
// than the default alignment comes from the global operators. In debug builds all memory comes from
// there, so that tools that watch the heap see each object. Rules: base/platform/cpool.h.
//
// For programs: do not leave an object created by the global `new` to the library's handles, whose
// `delete` returns it to the pool. A class that also inherits the operators of another base needs a
// using-declaration for those it uses.

#include "qrv/ccomp.h"

#include <cstddef>
#include <new>

class QRV_API cPooled {
  public:
    // Throw std::bad_alloc, or with std::nothrow return null.
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

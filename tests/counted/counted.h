#pragma once
// What the tests of this folder share. It makes a program of its own, because it replaces the
// global allocation functions by counting ones (counted.cpp), and because counters of the
// process must see no other test's work.

#include "base/platform/cpool.h"
#include "bench/data.h"
#include "qrv/core/cobj.h"

#include <string>

namespace counted {

// Calls of the global allocation functions, so far in this process.
extern unsigned long long allocations;
// After so many there is no more memory.
extern unsigned long long last_allocation;

// How many of them `work` makes.
template <class Work> unsigned long long allocations_of(Work const &work) {
    auto const before = allocations;
    work();
    return allocations - before;
}

// The tree that the tests work on, and that tree read.
inline cData const &data() {
    static cData const made = data_of("100k");
    return made;
}
inline double for_each_entry(unsigned long long count) {
    return static_cast<double>(count) / static_cast<double>(data().entries);
}
objref read(std::string const &text);

// What an entry may take of the heap. Where objects come from the pool, that is the text of long
// strings and the indexes of large maps; elsewhere each key, value and node is a piece of it, too.
inline bool in_pool() { return cat::pool::blocks() > 0; }
inline double most_allocations() { return in_pool() ? 0.5 : 3.6; }

} // namespace counted

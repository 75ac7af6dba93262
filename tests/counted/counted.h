#pragma once
// Shared by the tests of this folder. They are a separate program because counted.cpp replaces the
// global allocation functions by counting ones, and because counters of the process must not
// include the work of other tests.

#include "base/platform/cpool.h"
#include "bench/data.h"
#include "qrv/core/cobj.h"

#include <string>

namespace counted {

// The number of calls of the global allocation functions in this process.
extern unsigned long long allocations;
// The number of allocations after which memory runs out.
extern unsigned long long last_allocation;

// The number of allocations that `work` makes.
template <class Work> unsigned long long allocations_of(Work const &work) {
    auto const before = allocations;
    work();
    return allocations - before;
}

// The text that the tests work on, and the tree read from it.
inline cData const &data() {
    static cData const made = data_of("100k");
    return made;
}
inline double for_each_entry(unsigned long long count) {
    return static_cast<double>(count) / static_cast<double>(data().entries);
}
objref read(std::string const &text);

// The most heap allocations that an entry may need. Where objects come from the pool, only the
// characters of long strings and the indexes of large maps are on the heap; elsewhere each key,
// value and node is, too.
inline bool in_pool() { return cat::pool::blocks() > 0; }
inline double most_allocations() { return in_pool() ? 0.5 : 3.6; }

} // namespace counted

#include "tests/counted/counted.h"

#include "qrv/text/read/cattrscan.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <locale>
#include <new>
#include <sstream>

unsigned long long counted::allocations = 0;
unsigned long long counted::last_allocation = ~0ULL;

void *operator new(std::size_t size) {
    if (++counted::allocations > counted::last_allocation) throw std::bad_alloc();
    if (void *const memory = std::malloc(size ? size : 1)) return memory;
    throw std::bad_alloc();
}
void operator delete(void *memory) noexcept { std::free(memory); }
void operator delete(void *memory, std::size_t) noexcept { std::free(memory); }

objref counted::read(std::string const &text) {
    std::istringstream is(text);
    is.imbue(std::locale::classic());
    cAttrScan scan(is, false);
    objref tree;
    EXPECT_EQ(scan.scan_obj(tree, nullptr), 0);
    EXPECT_EQ(scan.errcount(), 0u);
    return tree;
}

#pragma once
// The pool: small cells of memory from blocks, each of which has cells of one size.
//
// Each size, in steps of 8 bytes, has its own blocks (base/platform/cregion.h), so the address of a
// cell determines its block. A cell has no header. The blocks of a size form a ring that begins at
// the block which supplies cells:
//
//   first block (with room or full), blocks with room, full blocks, and around to the first
//
//    A cell is taken from the first block; if that is full, the ring begins at the next one with
//    room. When a cell of a full block is freed, the block moves after the first block. When the
//    last cell of a block is freed, the block is freed as well.
//
// Memory returns to the system in any order of freeing. A cell is aligned to 16 bytes if its size
// is a multiple of 16, else to 8: this suffices for each type of that size without extended
// alignment.

#include <cstddef>

namespace cat::pool {

constexpr std::size_t largest_cell = 256;

// Allocates a cell for `size` bytes, 1 to largest_cell. Without memory it does what the global
// operator new does: calls the new handler, or throws std::bad_alloc.
void *take(std::size_t size);
// Frees a cell that was taken for `size` bytes.
void give(void *cell, std::size_t size) noexcept;
// The size of the taken cell at this address; 0 if the memory is not the pool's.   O(blocks)
std::size_t size_of(void const *memory) noexcept;
// The number of blocks that the pool holds now.
std::size_t blocks() noexcept;

} // namespace cat::pool

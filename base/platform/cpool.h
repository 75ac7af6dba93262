#pragma once
// The pool: small cells of memory, cut from blocks of one size of cell each.
//
// Each size in steps of 8 bytes has its own blocks (base/platform/cregion.h), so the block of a
// cell is found from the cell's address. A cell has no header. A size's blocks form a ring, which
// begins at the block that cells are taken from:
//
//   first block (with room or full), blocks with room, full blocks, and around to the first
//
//   A cell is taken from the first block; if that is full, the ring begins at the next one with
//   room. A cell comes back to a full block: the block moves to the place after the first. A
//   block's last cell comes back: the block goes back as well.
//
// What a program frees goes back to the system in whatever order. A cell is aligned to 16 bytes if
// its size is a multiple of 16, else to 8: all that a type of that size can need, up to the default
// alignment.

#include <cstddef>

namespace cat::pool {

constexpr std::size_t largest_cell = 256;

// A cell for `size` bytes, 1 to largest_cell. Where the system has no more memory it does what the
// global operator new does: calls the new handler, or throws std::bad_alloc.
void *take(std::size_t size);
// Gives back a cell that was taken for `size` bytes.
void give(void *cell, std::size_t size) noexcept;
// Is this a taken cell, and for how many bytes at most? 0: it is memory from elsewhere. O(blocks)
std::size_t size_of(void const *memory) noexcept;
// Blocks that the pool holds now.
std::size_t blocks() noexcept;

} // namespace cat::pool

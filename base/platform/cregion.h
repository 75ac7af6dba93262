#pragma once
// Blocks of 64 KiB for the pool, cut from regions of 2 MiB that the system gives and gets back
// whole.
//
// Fresh pages are the dearest part of an allocation: the system clears and maps each of them. A
// region is as large as a large page of the processor, which costs a third for each byte, so all
// regions but the first ask for one. The first, which small programs never leave, has small pages;
// of the free blocks in it only a few keep theirs.
//
//   first region              never goes back; its blocks are taken first
//   regions with free blocks  in a ring with the first; an empty one goes back to the system
//   full regions              in no ring: found from the address of a block that comes back
//
// A program that takes and gives one block by turns, just where a region begins, must not map that
// region each time. So if one is wanted soon after one went back, the next that is empty stays,
// until another is empty too.

#include <cstddef>

namespace cat::pool {

constexpr std::size_t block_size = 64 * 1024;
// The last bytes of each block are the region's.
constexpr std::size_t block_room = block_size - 64;

// Memory of block_room bytes, aligned to block_size; null when the system has no more.
void *take_block() noexcept;
void give_block(void *block) noexcept;

} // namespace cat::pool

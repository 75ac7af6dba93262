#pragma once
// Blocks of 64 KiB for the pool, cut from regions of 2 MiB that the system maps and unmaps as a
// whole.
//
// Fresh pages are the most expensive part of an allocation: the system clears and maps each of
// them. A region has the size of a large page of the processor, which costs a third as much for
// each byte, so all regions but the first ask for one. The first region has small pages, since
// small programs use no other; only a few of its free blocks keep theirs.
//
//    first region              never unmapped; its blocks are taken first
//    regions with free blocks  in a ring with the first; an empty one is unmapped
//    full regions              in no ring: found from the address of a block that is freed
//
// A program that takes and frees one block alternately, just where a region begins, must not map
// that region each time. So if a region is needed soon after one was unmapped, the next empty
// region stays mapped until another is empty too.

#include <cstddef>

namespace cat::pool {

constexpr std::size_t block_size = 64 * 1024;
// The last bytes of each block belong to the region.
constexpr std::size_t block_room = block_size - 64;

// Memory of block_room bytes, aligned to block_size; null if the system has no more.
void *take_block() noexcept;
void give_block(void *block) noexcept;

} // namespace cat::pool

// A region's state is at the end of its last block, and each block begins at a multiple of its
// size.

#include "base/platform/cregion.h"

#include "base/platform/cring.h"

#include <bit>
#include <cstdint>
#include <new>
#include <sys/mman.h>

namespace {

using cat::pool::block_room;
using cat::pool::block_size;

constexpr std::size_t region_size = 2 * 1024 * 1024;
constexpr std::uint32_t all_blocks = 0xFFFFFFFFu;
static_assert(region_size / block_size == 32);

// Free blocks of the first region that keep their pages. All others keep only the last page, where
// a region may have its state.
constexpr int blocks_kept = 4;
constexpr std::size_t page_size = 4096;
// A region is needed again soon if at most this many blocks were taken or freed since one was
// unmapped.
constexpr unsigned soon = 16;

// Linked in the ring of regions with free blocks.
struct cRegion : cat::pool::cRingLinks<cRegion> {
    std::uint32_t free;    // a bit for each free block
    std::uint32_t touched; // blocks of the first region that have pages

    std::byte *begin() noexcept {
        return reinterpret_cast<std::byte *>(reinterpret_cast<std::uintptr_t>(this) &
                                             ~(region_size - 1));
    }
    bool is_empty() const noexcept { return free == all_blocks; }
};
static_assert(sizeof(cRegion) <= block_size - block_room);

constinit cRegion *first_region = nullptr; // in the ring even when it is full
constinit cRegion *kept_region = nullptr;  // an empty one
constinit bool keeps_one = false;
constinit unsigned since_return = soon + 1;

std::byte *map(std::size_t size) noexcept {
    void *const memory =
        ::mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    return memory == MAP_FAILED ? nullptr : static_cast<std::byte *>(memory);
}

// Maps twice the size and keeps the aligned part.
std::byte *map_region() noexcept {
    std::byte *const memory = map(2 * region_size);
    if (!memory) return nullptr;
    std::size_t const before = -reinterpret_cast<std::uintptr_t>(memory) % region_size;
    if (before != 0) ::munmap(memory, before);
    ::munmap(memory + before + region_size, region_size - before);
    return memory + before;
}

cRegion *region_of(void const *block) noexcept {
    std::uintptr_t const begin = reinterpret_cast<std::uintptr_t>(block) & ~(region_size - 1);
    return reinterpret_cast<cRegion *>(begin + region_size - (block_size - block_room));
}

// Uses a large page if the system has one, else populates all pages at once: one page fault for
// each page, or even for each block, costs more. The system may ignore all this advice.
cRegion *add_region() noexcept {
    std::byte *const memory = map_region();
    if (!memory) return nullptr;
    ::madvise(memory, region_size, first_region ? MADV_HUGEPAGE : MADV_NOHUGEPAGE);
    if (first_region) ::madvise(memory, region_size, MADV_POPULATE_WRITE);
    auto *const region = new (region_of(memory)) cRegion{{}, all_blocks, 0};
    if (!first_region) {
        region->link_alone();
        return first_region = region;
    }
    region->link_after(first_region);
    if (since_return <= soon) keeps_one = true;
    return region;
}

cRegion *region_with_room() noexcept {
    if (!first_region) return add_region();
    if (first_region->free != 0) return first_region;
    return first_region->next != first_region ? first_region->next : add_region();
}

void return_region(cRegion *region) noexcept {
    region->unlink();
    ::munmap(region->begin(), region_size);
    since_return = 0;
}

void keep_or_return(cRegion *region) noexcept {
    if (keeps_one && !kept_region) {
        kept_region = region;
        return;
    }
    keeps_one = false;
    return_region(region);
    if (kept_region && kept_region->is_empty()) return_region(kept_region);
    kept_region = nullptr;
}

} // namespace

void *cat::pool::take_block() noexcept {
    cRegion *const region = region_with_room();
    if (!region) return nullptr;
    ++since_return;
    std::uint32_t const ready = region->free & region->touched;
    int const index = std::countr_zero(ready ? ready : region->free);
    std::uint32_t const bit = 1U << index;
    region->touched |= bit;
    region->free &= ~bit;
    if (region->free == 0 && region != first_region) region->unlink();
    return region->begin() + static_cast<std::size_t>(index) * block_size;
}

void cat::pool::give_block(void *block) noexcept {
    cRegion *const region = region_of(block);
    ++since_return;
    if (region->free == 0 && region != first_region) region->link_after(first_region);
    auto const offset = static_cast<std::size_t>(static_cast<std::byte *>(block) - region->begin());
    std::uint32_t const bit = 1U << offset / block_size;
    region->free |= bit;
    if (region != first_region) {
        if (region->is_empty() && region != kept_region) keep_or_return(region);
    } else if (std::popcount(region->free & region->touched) > blocks_kept) {
        ::madvise(block, block_size - page_size, MADV_DONTNEED);
        region->touched &= ~bit;
    }
}

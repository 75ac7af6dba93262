// The pool, and the operators by which classes use it. Its state is never destroyed: objects may
// outlive every static object.

#include "base/platform/cpool.h"

#include "base/platform/cregion.h"
#include "base/platform/cring.h"
#include "qrv/base/platform/cpooled.h"

#include <array>
#include <cstdint>
#include <utility>

namespace {

using cat::pool::block_room;
using cat::pool::block_size;

constexpr std::size_t step = 8;

struct cCell {
    cCell *next;
};

struct alignas(16) cBlock : cat::pool::cRingLinks<cBlock> {
    cCell *free;          // cells that were freed
    std::byte *fresh;     // no cell from here to the end was ever taken
    std::uint32_t living; // cells taken
    std::uint32_t cell_size;

    bool has_fresh() const noexcept {
        auto const end = reinterpret_cast<std::byte const *>(this) + block_room;
        return static_cast<std::size_t>(end - fresh) >= cell_size;
    }
    bool has_room() const noexcept { return free || has_fresh(); }
};

// The first block of each size, or null.
constinit std::array<cBlock *, cat::pool::largest_cell / step + 1> rings{};

cBlock *&ring_of(std::size_t size) noexcept { return rings[(size + step - 1) / step]; }

cBlock *block_of(void const *cell) noexcept {
    return reinterpret_cast<cBlock *>(reinterpret_cast<std::uintptr_t>(cell) & ~(block_size - 1));
}

// A new block, the first of its ring. False when the system has no more memory.
bool add_block(cBlock *&ring, std::size_t size) noexcept {
    auto *const memory = static_cast<std::byte *>(cat::pool::take_block());
    if (!memory) return false;
    auto const cell_size = static_cast<std::uint32_t>((size + step - 1) / step * step);
    auto *const block = new (memory) cBlock{{}, nullptr, memory + sizeof(cBlock), 0, cell_size};
    if (ring)
        block->link_before(ring);
    else
        block->link_alone();
    ring = block;
    return true;
}

// For a first block that is full or does not exist.
[[gnu::noinline]] void *take_elsewhere(std::size_t size) {
    cBlock *&ring = ring_of(size);
    if (ring && ring->next->has_room()) {
        ring = ring->next;
    } else if (!add_block(ring, size)) {
        std::new_handler const handler = std::get_new_handler();
        if (!handler) throw std::bad_alloc();
        handler(); // RE-ENTERS: may have freed memory
    }
    return cat::pool::take(size);
}

// Frees a block whose cells are all free, or moves a block that was full to after the first one.
[[gnu::noinline]] void rearrange(cBlock *block, cBlock *&ring) noexcept {
    if (block->living == 0) {
        bool const is_last = block->next == block;
        if (block == ring) ring = is_last ? nullptr : block->next;
        block->unlink();
        return cat::pool::give_block(block);
    }
    if (block == ring) return;
    cBlock *const next = block->next;
    block->unlink();
    block->link_before(block->has_fresh() ? next : ring->next);
}

template <class Visit> void visit_blocks(Visit visit) {
    for (cBlock const *const first : rings) {
        if (!first) continue;
        visit(*first);
        for (cBlock const *block = first->next; block != first; block = block->next) visit(*block);
    }
}

} // namespace

void *cat::pool::take(std::size_t size) {
    cBlock *const block = ring_of(size);
    if (!block || !block->has_room()) return take_elsewhere(size);
    ++block->living;
    if (cCell *const cell = block->free) {
        block->free = cell->next;
        return cell;
    }
    return std::exchange(block->fresh, block->fresh + block->cell_size);
}

void cat::pool::give(void *memory, std::size_t size) noexcept {
    cBlock *const block = block_of(memory);
    cCell *const rest = block->free;
    block->free = new (memory) cCell{rest};
    if (--block->living == 0 || !rest) rearrange(block, ring_of(size));
}

std::size_t cat::pool::size_of(void const *memory) noexcept {
    std::size_t size = 0;
    visit_blocks([&](cBlock const &block) {
        if (&block == block_of(memory)) size = block.cell_size;
    });
    return size;
}

std::size_t cat::pool::blocks() noexcept {
    std::size_t count = 0;
    visit_blocks([&](cBlock const &) { ++count; });
    return count;
}

namespace {

#ifdef QRV_POOL
constexpr bool is_pooled(std::size_t size) noexcept { return size <= cat::pool::largest_cell; }
#else
constexpr bool is_pooled(std::size_t) noexcept { return false; }
#endif

} // namespace

void *cPooled::operator new(std::size_t size) {
    return is_pooled(size) ? cat::pool::take(size) : ::operator new(size);
}

void *cPooled::operator new(std::size_t size, std::nothrow_t const &) noexcept {
    try {
        return operator new(size);
    } catch (std::bad_alloc const &) {
        return nullptr;
    }
}

void cPooled::operator delete(void *memory, std::size_t size) noexcept {
    if (!is_pooled(size)) return ::operator delete(memory);
    if (memory) cat::pool::give(memory, size);
}

void cPooled::operator delete(void *memory, std::nothrow_t const &) noexcept {
    std::size_t const size = cat::pool::size_of(memory);
    if (size == 0) return ::operator delete(memory);
    cat::pool::give(memory, size);
}

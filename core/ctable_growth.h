#pragma once
// How an open-addressed table is searched, and when it grows. cAttrHash and the list of a
// repository use these, and so do the checks of their rules H5 and R3. In both, a slot was never
// used, has a live entry, or is a tombstone. Each has its own probe loop: the one of cAttrHash
// compares by hooks that may change the table, and skips most nodes by a tag in their words.

#include <cstdint>

// Slots of a new table: room for 77 entries, which is more than most maps have.
constexpr std::uint32_t first_size = 97;

// The slots of a probe, in order: the first is hash mod size, the step (hash mod (size - 2)) + 1.
// As the size is prime, they are all slots.
class cProbeSlots {
  public:
    cProbeSlots(std::uint32_t hash, std::uint32_t size) noexcept
        : cProbeSlots(hash % size, hash % (size - 2), size) {}
    // From the two remainders, for a table that computes them without a division.
    cProbeSlots(std::uint32_t by_size, std::uint32_t by_less, std::uint32_t size) noexcept
        : slot_(by_size), step_(std::uint64_t{by_less} + 1), size_(size) {}

    std::uint32_t slot() const noexcept { return static_cast<std::uint32_t>(slot_); }
    void next() noexcept {
        slot_ += step_;
        if (slot_ >= size_) slot_ -= size_;
    }

  private:
    std::uint64_t slot_, step_;
    std::uint32_t size_;
};

// Share of live entries, in percent, above which a table grows: the 78th takes 97 slots to 197.
// Tombstones are left out of the count on purpose.
constexpr std::uint64_t grow_percent = 80;

constexpr bool is_too_full(std::uint32_t live, std::uint32_t size) noexcept {
    return live * std::uint64_t{100} > size * grow_percent;
}

// One slot in this many must never have been used. If there are fewer, the table is rebuilt without
// tombstones: otherwise a search for an absent key would visit all of them.
constexpr std::uint32_t unused_part = 8;

constexpr bool is_worn(std::uint32_t unused, std::uint32_t size) noexcept {
    return unused < size / unused_part;
}

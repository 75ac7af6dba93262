#pragma once
// When an open-addressed table grows. cAttrHash and the list of a repository use these constants,
// and so do the checks of their rules H5 and R3. In both, a slot was never used, has a live entry,
// or is a tombstone.

#include <cstdint>

// Slots of a new table: room for 77 entries, which is more than most maps have.
constexpr std::uint32_t first_size = 97;

// Share of live entries, in percent, above which a table grows: the 78th takes 97 slots to 197.
// Tombstones are left out of the count on purpose.
constexpr std::uint64_t grow_percent = 80;

constexpr bool is_too_full(std::uint32_t live, std::uint32_t size) noexcept {
    return live * std::uint64_t{100} > size * grow_percent;
}

// One slot in this many must never have been used. If there are fewer, the table is rebuilt without
// tombstones: otherwise a search for an absent key would visit all of them.
constexpr std::uint32_t unused_part = 8;

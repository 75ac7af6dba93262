#pragma once
// When an open-addressed table grows. cAttrHash and the list of a repository depend on these, with
// the checks of their rules (H5, R3); both have slots that were never used, slots of live entries,
// and tombstones.

#include <cstdint>

// Slots of a new table, one of the sizes that tables grow through: room for 77 entries, which is
// more than most maps have.
constexpr std::uint32_t first_size = 97;

// Share of live entries, in percent, above which a table grows: the 78th takes 97 slots to 197.
// Tombstones are left out of the count on purpose.
constexpr std::uint64_t grow_percent = 80;

constexpr bool is_too_full(std::uint32_t live, std::uint32_t size) noexcept {
    return live * std::uint64_t{100} > size * grow_percent;
}

// One slot in so many must never have been used. With fewer the tombstones are cleared away, or
// searches for absent keys would pass them all.
constexpr std::uint32_t unused_part = 8;

#pragma once
// A hash that nobody outside the process can predict: SipHash-1-3 with a random key that is drawn
// once, on first use. For tables whose keys an attacker may choose to collide.

#include <cstddef>
#include <cstdint>
#include <string_view>

std::uint32_t seeded_hash_bytes(void const *bytes, std::size_t count);

// An odd factor that nobody outside the process can predict, different for each name. The name must
// not be empty.
std::uint64_t seeded_factor(std::string_view name);

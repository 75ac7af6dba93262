#pragma once
// A hash that nobody outside the process can predict: SipHash-1-3 with a random key that is drawn
// once, on first use. For tables whose keys an attacker may choose to collide.

#include <cstddef>
#include <cstdint>

std::uint32_t seeded_hash_bytes(void const *bytes, std::size_t count);

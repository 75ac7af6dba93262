// SipHash-1-3 over the bytes, folded to 32 bits. The key is drawn once, at the first call.

#include "base/seeded_hash.h"

#include <bit>
#include <chrono>
#include <cstring>
#include <exception>
#include <random>

namespace {

struct cSeed {
    std::uint64_t k0, k1;
};
constinit cSeed seed{};
constinit bool seed_drawn = false;

std::uint64_t random_word() {
    try {
        std::random_device device;
        return std::uint64_t{device()} << 32 | device();
    } catch (std::exception const &) { // no random source: the time and an address
        auto const now = std::chrono::steady_clock::now().time_since_epoch().count();
        return static_cast<std::uint64_t>(now) ^ reinterpret_cast<std::uintptr_t>(&now);
    }
}

struct cState {
    std::uint64_t v0, v1, v2, v3;

    void round() noexcept {
        v0 += v1, v1 = std::rotl(v1, 13) ^ v0, v0 = std::rotl(v0, 32);
        v2 += v3, v3 = std::rotl(v3, 16) ^ v2;
        v0 += v3, v3 = std::rotl(v3, 21) ^ v0;
        v2 += v1, v1 = std::rotl(v1, 17) ^ v2, v2 = std::rotl(v2, 32);
    }
    void take(std::uint64_t word) noexcept {
        v3 ^= word;
        round();
        v0 ^= word;
    }
};

} // namespace

std::uint32_t seeded_hash_bytes(void const *bytes, std::size_t count) {
    if (!seed_drawn) {
        seed = {random_word(), random_word()};
        seed_drawn = true;
    }
    cState state{seed.k0 ^ 0x736f6d6570736575U, seed.k1 ^ 0x646f72616e646f6dU,
                 seed.k0 ^ 0x6c7967656e657261U, seed.k1 ^ 0x7465646279746573U};
    auto const *at = static_cast<unsigned char const *>(bytes);
    std::uint64_t const length = count;
    for (; count >= 8; at += 8, count -= 8) {
        std::uint64_t word;
        std::memcpy(&word, at, 8);
        state.take(word);
    }
    std::uint64_t tail = 0;
    if (count) std::memcpy(&tail, at, count);
    state.take(tail | length << 56);
    state.v2 ^= 0xFF;
    for (int i = 0; i < 3; ++i) state.round();
    std::uint64_t const mixed = state.v0 ^ state.v1 ^ state.v2 ^ state.v3;
    return static_cast<std::uint32_t>(mixed ^ mixed >> 32);
}

std::uint64_t seeded_factor(std::string_view name) {
    std::uint64_t const upper = seeded_hash_bytes(name.data(), name.size());
    return upper << 32 | seeded_hash_bytes(name.data(), name.size() - 1) | 1;
}

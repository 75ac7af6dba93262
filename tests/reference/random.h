#pragma once
// A generator of random numbers that gives the same sequence for the same seed everywhere: the
// distributions of the standard library don't.

#include <array>
#include <cstddef>
#include <cstdint>

class cRandom {
  public:
    explicit cRandom(std::uint64_t seed) : state_(seed * 0x9E3779B97F4A7C15u + 0x1234567u) {}

    std::uint64_t next() {
        std::uint64_t z = (state_ += 0x9E3779B97F4A7C15u);
        z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9u;
        z = (z ^ (z >> 27)) * 0x94D049BB133111EBu;
        return z ^ (z >> 31);
    }
    // 0 to n-1; 0 for n 0.
    unsigned below(std::size_t n) {
        return n ? static_cast<unsigned>((next() >> 32) * n >> 32) : 0;
    }
    bool one_in(unsigned n) { return below(n) == 0; }
    template <class List> decltype(auto) pick(List &list) { return list[below(std::size(list))]; }

  private:
    std::uint64_t state_;
};

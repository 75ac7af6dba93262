#pragma once
// A random number generator whose sequence for a seed is the same everywhere; those of the standard
// library's distributions are not.

#include <cstddef>
#include <cstdint>
#include <iterator>

class cRandom {
  public:
    // The seed is mixed first, so that similar seeds have unrelated sequences.
    explicit cRandom(std::uint64_t seed) : state_(mixed(seed * 0xD1342543DE82EF95u + 1)) {}

    std::uint64_t next() { return mixed(state_ += 0x9E3779B97F4A7C15u); }
    // A number from 0 to n-1; 0 if n is 0.
    unsigned below(std::size_t n) {
        return n ? static_cast<unsigned>((next() >> 32) * n >> 32) : 0;
    }
    bool one_in(unsigned n) { return below(n) == 0; }
    template <class List> decltype(auto) pick(List &list) { return list[below(std::size(list))]; }

  private:
    static constexpr std::uint64_t mixed(std::uint64_t z) {
        z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9u;
        z = (z ^ (z >> 27)) * 0x94D049BB133111EBu;
        return z ^ (z >> 31);
    }

    std::uint64_t state_;
};

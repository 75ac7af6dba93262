#pragma once
// Finds the end of a run of characters in memory, sixteen at a time where the processor supports
// it. The exit of a loop over single characters is hard to predict for the processor: sixteen at a
// time save 2.6 % of the instructions of reading, and 3.6 to 5.5 % of its time.

#include "text/scan/cattrscanner_rules.h"

#include <bit>
#include <cstring>

namespace scan {

#ifdef __SSE2__
using cSixteen [[gnu::vector_size(16)]] = unsigned char;
using cSixteenBits [[gnu::vector_size(16)]] = char;

// A bit for each of sixteen characters that is in the set; equivalent to stops_at().
template <unsigned set> inline unsigned stops_of_sixteen(char const *p) {
    static_assert(set == cs_no_word || set == cs_no_digit || set == cs_quote || set == cs_tick);
    cSixteen c;
    std::memcpy(&c, p, sizeof c);
    auto stops = c - '0' > 9;
    if constexpr (set == cs_no_word) stops &= ((c | 0x20) - 'a' > 25) & (c != '_');
    if constexpr (set == cs_quote) stops = (c == '"') | (c == '\\') | (c == '\n');
    if constexpr (set == cs_tick) stops = (c == '\'') | (c == '\\') | (c == '\n');
    return static_cast<unsigned>(__builtin_ia32_pmovmskb128(reinterpret_cast<cSixteenBits>(stops)));
}
#endif

// The first character in the set, or the end.
template <unsigned set>
[[gnu::always_inline]] inline char const *run_end(char const *p, char const *end) {
#ifdef __SSE2__
    for (; end - p >= 16; p += 16) {
        unsigned const found = stops_of_sixteen<set>(p);
        int const n = std::countr_zero(found | 1U << 16);
        for (int i = 0; i < n; ++i) look_at(p + i);
        if (found == 0) continue;
        look_at(p + n);
        return p + n;
    }
#endif
    while (p != end && !stops(look_at(p), set)) ++p;
    return p;
}

} // namespace scan

#include "tools/qrv/rules/suggestion.h"

#include "tools/qrv/output/characters.h"

#include <algorithm>
#include <cstdint>
#include <vector>

namespace {

constexpr size_t longest_name = 64;
constinit std::uint64_t steps_left = 10'000'000;

bool may_take(std::uint64_t steps) {
    if (steps > steps_left) return false;
    steps_left -= steps;
    return true;
}

// The number of characters that must be inserted, removed, changed or swapped with the next one.
// Upper and lower case are equal.
size_t distance(std::string_view a, std::string_view b) {
    std::vector<size_t> before(b.size() + 1), row(b.size() + 1), next(b.size() + 1);
    for (size_t j = 0; j <= b.size(); ++j) row[j] = j;
    for (size_t i = 1; i <= a.size(); ++i) {
        next[0] = i;
        for (size_t j = 1; j <= b.size(); ++j) {
            bool const same = to_lower(a[i - 1]) == to_lower(b[j - 1]);
            next[j] = std::min({row[j] + 1, next[j - 1] + 1, row[j - 1] + (same ? 0 : 1)});
            if (i > 1 && j > 1 && to_lower(a[i - 1]) == to_lower(b[j - 2]) &&
                to_lower(a[i - 2]) == to_lower(b[j - 1]))
                next[j] = std::min(next[j], before[j - 2] + 1);
        }
        before.swap(row);
        row.swap(next);
    }
    return row[b.size()];
}

// The number of equal letters at the beginning.
size_t same_letters(std::string_view a, std::string_view b) {
    size_t count = 0;
    while (count < std::min(a.size(), b.size()) && to_lower(a[count]) == to_lower(b[count]))
        ++count;
    return count;
}

} // namespace

// A third of the letters may be wrong; in short names one letter, in a single letter none.
cSuggestion::cSuggestion(std::string_view unknown)
    : unknown_(unknown), limit_(unknown.size() < 2 || unknown.size() > longest_name
                                    ? 0
                                    : std::max<size_t>(1, unknown.size() / 3) + 1) {}

void cSuggestion::show(std::string_view known) {
    size_t const a = unknown_.size(), b = known.size();
    if (!may_take(10)) limit_ = 0;
    if (std::max(a, b) - std::min(a, b) >= limit_ || b == 0 || !may_take(a * b + 20)) return;
    size_t const found = distance(unknown_, known);
    if (found >= limit_) return;
    cRank const rank{found, a - same_letters(unknown_, known), std::max(a, b) - std::min(a, b)};
    limit_ = found + 1;
    if (!best_.empty() && rank >= rank_) return;
    rank_ = rank;
    best_ = known;
}

std::string cSuggestion::text() const { return did_you_mean(best_); }

std::string did_you_mean(std::string const &best) {
    return best.empty() ? "" : "; did you mean '" + best + "'?";
}

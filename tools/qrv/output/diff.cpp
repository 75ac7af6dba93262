#include "tools/qrv/output/diff.h"

#include <algorithm>
#include <cstddef>
#include <sstream>
#include <unordered_map>
#include <vector>

namespace {

using cTexts = std::vector<std::string>;

constexpr size_t table_limit = 4000000; // cells of the table

// The classic table of lengths, from the back; then a walk from the front.
void match_best(cTexts const &a, cTexts const &b, size_t first, size_t end_a, size_t end_b,
                std::vector<int> &partner) {
    size_t const rows = end_a - first, columns = end_b - first;
    std::vector<unsigned> length((rows + 1) * (columns + 1));
    auto const at = [&](size_t i, size_t j) -> unsigned & { return length[i * (columns + 1) + j]; };
    for (size_t i = rows; i-- > 0;)
        for (size_t j = columns; j-- > 0;)
            at(i, j) = a[first + i] == b[first + j] ? at(i + 1, j + 1) + 1
                                                    : std::max(at(i + 1, j), at(i, j + 1));
    for (size_t i = 0, j = 0; i < rows && j < columns;) {
        if (a[first + i] == b[first + j]) {
            partner[first + i] = static_cast<int>(first + j);
            ++i, ++j;
        } else if (at(i + 1, j) >= at(i, j + 1)) {
            ++i;
        } else {
            ++j;
        }
    }
}

// Each element takes the next equal one behind the last that was taken.
void match_greedy(cTexts const &a, cTexts const &b, size_t first, size_t end_a, size_t end_b,
                  std::vector<int> &partner) {
    std::unordered_map<std::string, std::vector<size_t>> places; // from the back
    for (size_t j = end_b; j-- > first;) places[b[j]].push_back(j);
    size_t next = first;
    for (size_t i = first; i < end_a; ++i) {
        std::vector<size_t> &stack = places[a[i]];
        while (!stack.empty() && stack.back() < next) stack.pop_back();
        if (stack.empty()) continue;
        partner[i] = static_cast<int>(stack.back());
        next = stack.back() + 1;
    }
}

// For each element of `a`: its partner's index in `b`, growing, or -1.
std::vector<int> kept_in(cTexts const &a, cTexts const &b) {
    std::vector<int> partner(a.size(), -1);
    size_t first = 0, end_a = a.size(), end_b = b.size();
    while (first < end_a && first < end_b && a[first] == b[first])
        partner[first] = static_cast<int>(first), ++first;
    while (first < end_a && first < end_b && a[end_a - 1] == b[end_b - 1])
        partner[--end_a] = static_cast<int>(--end_b);
    if ((end_a - first) * (end_b - first) <= table_limit)
        match_best(a, b, first, end_a, end_b, partner);
    else
        match_greedy(a, b, first, end_a, end_b, partner);
    return partner;
}

cTexts lines_of(std::string const &text) {
    cTexts lines;
    std::istringstream is(text);
    for (std::string line; std::getline(is, line);) lines.push_back(line);
    return lines;
}

} // namespace

std::string changes(std::string const &name, std::string const &before, std::string const &after) {
    cTexts const a = lines_of(before), b = lines_of(after);
    std::vector<int> const kept = kept_in(a, b);
    std::string told;
    size_t i = 0, j = 0;
    while (i < a.size() || j < b.size()) {
        size_t const line = i;
        std::string stretch;
        while (i < a.size() && kept[i] < 0) stretch += "- " + a[i++] + "\n";
        size_t const next = i < a.size() ? static_cast<size_t>(kept[i]) : b.size();
        while (j < next) stretch += "+ " + b[j++] + "\n";
        if (!stretch.empty())
            told += name + ":" + std::to_string(line + 1) + ": would change\n" + stretch;
        ++i, ++j;
    }
    if (told.empty()) told = name + ": would change: the line end of the last line\n";
    return told;
}

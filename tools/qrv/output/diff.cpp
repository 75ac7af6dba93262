#include "tools/qrv/output/diff.h"

#include <algorithm>
#include <cstddef>
#include <sstream>
#include <unordered_map>
#include <vector>

namespace {

using cTexts = std::vector<std::string>;

constexpr size_t table_limit = 4000000; // cells of the table of lengths

// Finds a longest common subsequence: fills the table of lengths from the back, then walks from the
// front.
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

// Pairs each element with the next equal one after the last that was paired.
void match_greedy(cTexts const &a, cTexts const &b, size_t first, size_t end_a, size_t end_b,
                  std::vector<int> &partner) {
    std::unordered_map<std::string, std::vector<size_t>> places; // in reverse order
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

// For each element of `a` the index of its partner in `b`, increasing, or -1.
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

// The lines with their line feeds; the last one may have none.
cTexts whole_lines_of(std::string const &text) {
    cTexts lines;
    for (size_t at = 0, end = 0; at < text.size(); at = end) {
        size_t const feed = text.find('\n', at);
        end = feed == text.npos ? text.size() : feed + 1;
        lines.push_back(text.substr(at, end - at));
    }
    return lines;
}

std::string marked(char mark, std::string const &line) {
    return mark + line + (line.ends_with('\n') ? "" : "\n\\ No newline at end of file\n");
}

// Returns "3,7": first line and number of lines. An empty stretch has the number of the line
// before.
std::string stretch(size_t first, size_t count) {
    return std::to_string(count > 0 ? first + 1 : first) + ',' + std::to_string(count);
}

// A line of both texts or of one of them, with its index in both.
struct cStep {
    char mark; // ' ', '-' or '+'
    size_t before, after;
};

std::vector<cStep> steps_from(cTexts const &a, cTexts const &b) {
    std::vector<int> const kept = kept_in(a, b);
    std::vector<cStep> steps;
    size_t i = 0, j = 0;
    while (i < a.size() || j < b.size()) {
        for (; i < a.size() && kept[i] < 0; ++i) steps.push_back({'-', i, j});
        size_t const next = i < a.size() ? static_cast<size_t>(kept[i]) : b.size();
        for (; j < next; ++j) steps.push_back({'+', i, j});
        if (i < a.size()) steps.push_back({' ', i++, j++});
    }
    return steps;
}

} // namespace

std::string changes(std::string const &name, std::string const &before, std::string const &after) {
    cTexts const a = lines_of(before), b = lines_of(after);
    std::vector<int> const kept = kept_in(a, b);
    std::string lines;
    size_t i = 0, j = 0;
    while (i < a.size() || j < b.size()) {
        size_t const line = i;
        std::string stretch;
        while (i < a.size() && kept[i] < 0) stretch += "- " + a[i++] + "\n";
        size_t const next = i < a.size() ? static_cast<size_t>(kept[i]) : b.size();
        while (j < next) stretch += "+ " + b[j++] + "\n";
        if (!stretch.empty())
            lines += name + ":" + std::to_string(line + 1) + ": would change\n" + stretch;
        ++i, ++j;
    }
    if (lines.empty()) lines = name + ": would change: the line end of the last line\n";
    return lines;
}

std::string unified_diff(std::string const &name, std::string const &before,
                         std::string const &after) {
    constexpr size_t around = 3;
    cTexts const a = whole_lines_of(before), b = whole_lines_of(after);
    std::vector<cStep> const steps = steps_from(a, b);
    std::string diff;
    size_t at = 0;
    for (;;) {
        while (at < steps.size() && steps[at].mark == ' ') ++at;
        if (at == steps.size()) break;
        size_t const first = at < around ? 0 : at - around;
        size_t end = at; // the end of the last change of this hunk
        for (size_t i = at; i < steps.size() && i < end + 2 * around + 1; ++i)
            if (steps[i].mark != ' ') end = i + 1;
        size_t const last = std::min(end + around, steps.size());
        size_t olds = 0, news = 0;
        std::string lines;
        for (size_t i = first; i < last; ++i) {
            olds += steps[i].mark != '+';
            news += steps[i].mark != '-';
            lines += marked(steps[i].mark,
                            steps[i].mark == '+' ? b[steps[i].after] : a[steps[i].before]);
        }
        diff += "@@ -" + stretch(steps[first].before, olds) + " +" +
                stretch(steps[first].after, news) + " @@\n" + lines;
        at = last;
    }
    // A tab ends a name that contains blanks.
    std::string const end_of_name = name.find(' ') == name.npos ? "\n" : "\t\n";
    return diff.empty() ? diff : "--- " + name + end_of_name + "+++ " + name + end_of_name + diff;
}

#include "tests/sweep/judge.h"

#include <algorithm>

namespace sweep_test {
namespace {

using cTexts = std::vector<std::string_view>;

cTexts lines_of(std::string_view text) {
    cTexts lines;
    while (!text.empty()) {
        size_t const end = std::min(text.find('\n'), text.size() - 1) + 1;
        lines.push_back(text.substr(0, end));
        text.remove_prefix(end);
    }
    return lines;
}

// Removes from two groups of lines those that are the same at both ends.
size_t differing(cTexts const &all, size_t from, size_t to, cTexts const &others, size_t begin,
                 size_t end) {
    while (from < to && begin < end && all[from] == others[begin]) ++from, ++begin;
    while (from < to && begin < end && all[to - 1] == others[end - 1]) --to, --end;
    return std::max(to - from, end - begin);
}

} // namespace

// Lines that must stay form runs, separated by lines that may change. Each run is searched at its
// next occurrence; the last one must be at the end.
std::optional<size_t> changed_lines(std::string_view before, std::string_view after,
                                    cLines const &allowed) {
    cTexts const old = lines_of(before), now = lines_of(after);
    auto const is_free = [&](size_t line) { return line < allowed.size() && allowed[line]; };
    size_t changed = 0, at = 0, line = 0;
    for (;;) {
        size_t const gap = line;
        while (line < old.size() && is_free(line)) ++line;
        size_t const row = line;
        while (line < old.size() && !is_free(line)) ++line;
        auto const first = old.begin() + static_cast<std::ptrdiff_t>(row),
                   last = old.begin() + static_cast<std::ptrdiff_t>(line);
        auto found =
            std::search(now.begin() + static_cast<std::ptrdiff_t>(at), now.end(), first, last);
        if (line == old.size()) { // the last run
            if (now.size() < at + (line - row)) return std::nullopt;
            found = now.end() - static_cast<std::ptrdiff_t>(line - row);
            if (!std::equal(first, last, found)) return std::nullopt;
        }
        if (row < line && found == now.end()) return std::nullopt;
        size_t const begin = at, end = static_cast<size_t>(found - now.begin());
        if (gap == row && begin != end) return std::nullopt;
        changed += differing(old, gap, row, now, begin, end);
        if (line == old.size()) return changed;
        at = end + (line - row);
    }
}

std::vector<std::string> comments(std::string_view text, std::vector<cBytes> const &without) {
    std::vector<std::string> found;
    for (size_t i = 0; i < text.size(); ++i) {
        size_t end = i;
        if (text[i] == '"' || text[i] == '\'') {
            char const quote = text[i++];
            for (; i < text.size() && text[i] != quote; ++i) i += text[i] == '\\';
            continue;
        }
        if (text.substr(i, 2) == "//") {
            end = text.find('\n', i);
        } else if (text.substr(i, 2) == "/*") {
            end = text.find("*/", i + 2);
            if (end != text.npos) end += 2;
        }
        if (end == i) continue;
        end = std::min(end, text.size());
        bool const left_out = std::any_of(without.begin(), without.end(), [&](cBytes const &bytes) {
            return bytes.first <= i && i < bytes.second;
        });
        std::string comment(text.substr(i, end - i));
        comment.erase(comment.find_last_not_of(" \t\r") + 1);
        if (!left_out) found.push_back(comment);
        i = end - 1;
    }
    return found;
}

size_t lost(std::vector<std::string> before, std::vector<std::string> after) {
    std::sort(before.begin(), before.end());
    std::sort(after.begin(), after.end());
    std::vector<std::string> gone;
    std::set_difference(before.begin(), before.end(), after.begin(), after.end(),
                        std::back_inserter(gone));
    return gone.size();
}

} // namespace sweep_test

#pragma once
// The effect of an edit on text: lines that differ, comments that are lost. It has its own
// functions for reading lines and comments, since it judges the library and the tool.

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace sweep_test {

// The lines of text that an edit may change, numbered from 0.
using cLines = std::vector<bool>;

// The number of lines that differ: for each group of changed lines, the larger of the numbers
// before and after. No value if a line that must stay was changed or removed; new lines are allowed
// next to an allowed line.
std::optional<size_t> changed_lines(std::string_view before, std::string_view after,
                                    cLines const &allowed);

// The offsets of the first byte and of the end.
using cBytes = std::pair<size_t, size_t>;

// All comments except those that begin in these bytes.
std::vector<std::string> comments(std::string_view text, std::vector<cBytes> const &without = {});

// The number of comments that no longer exist.
size_t lost(std::vector<std::string> before, std::vector<std::string> after);

} // namespace sweep_test

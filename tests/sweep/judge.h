#pragma once
// What an edit did to a text: lines that differ, comments that are lost. It reads lines and
// comments by itself, since it judges the library and the tool.

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace sweep_test {

// The lines of a text that an edit may change, numbers from 0.
using cLines = std::vector<bool>;

// How many lines differ, where each group of lines counts as often as its longer side. None if
// another line than those allowed was changed or removed; new lines are allowed next to an allowed
// one.
std::optional<size_t> changed_lines(std::string_view before, std::string_view after,
                                    cLines const &allowed);

// Bytes from the first to before the second.
using cBytes = std::pair<size_t, size_t>;

// All comments that begin in none of these bytes.
std::vector<std::string> comments(std::string_view text, std::vector<cBytes> const &without = {});

// How many of the comments are not there any more.
size_t lost(std::vector<std::string> before, std::vector<std::string> after);

} // namespace sweep_test

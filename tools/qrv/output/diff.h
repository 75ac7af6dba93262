#pragma once
// What differs between two texts, line by line: the longest common subsequence where that can be
// had at a bearable price, else a greedy one.

#include <string>

// Each stretch that differs: "name:3: would change", then the lines that go and those that come,
// behind "- " and "+ ".
std::string changes(std::string const &name, std::string const &before, std::string const &after);

// The same as a unified diff, with three lines around each change, as `patch` reads it; empty if
// the texts are equal.
std::string unified_diff(std::string const &name, std::string const &before,
                         std::string const &after);

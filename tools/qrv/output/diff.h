#pragma once
// The differences between two texts, line by line. Uses a longest common subsequence if that is not
// too expensive, else a greedy one.

#include <string>

// Returns for each difference "name:3: would change", then the removed lines after "- " and the
// added lines after "+ ".
std::string changes(std::string const &name, std::string const &before, std::string const &after);

// The same as a unified diff, with three lines around each change, as `patch` reads it; empty if
// the texts are equal.
std::string unified_diff(std::string const &name, std::string const &before,
                         std::string const &after);

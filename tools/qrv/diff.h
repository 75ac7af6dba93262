#pragma once
// What is kept of a sequence in another one: the longest common subsequence where that can be had
// at a bearable price, else a greedy one.

#include <string>
#include <vector>

// For each element of `a`: its partner's index in `b`, growing, or -1.
std::vector<int> kept_in(std::vector<std::string> const &a, std::vector<std::string> const &b);

#pragma once
// Where the values of a text stand: for messages about values that were read from it.

#include "tools/qrv/output/messages.h"

#include <set>
#include <string>
#include <unordered_map>

// By paths such as /a/0, with keys in their written form. What is inside typed values, and values
// whose keys are typed, have no place, nor has what stands in a set behind more than single tokens.
using cPlaces = std::unordered_map<std::string, cPlace>;

// Of a text that reads without errors, those of the given paths; of a key that stands twice the
// last one's. All paths of a text would take the square of its size where it is deep.
cPlaces places_in(std::string const &bytes, std::set<std::string> const &paths);

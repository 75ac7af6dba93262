#pragma once
// Where the values of a text stand: for messages about values that were read from it.

#include "messages.h"

#include <string>
#include <unordered_map>

// By paths such as /a/0, with keys in their written form. What is inside typed values, and values
// whose keys are typed, have no place.
using cPlaces = std::unordered_map<std::string, cPlace>;

// Of a text that reads without errors. O(size)
cPlaces places_in(std::string const &bytes);

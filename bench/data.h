#pragma once
// The data of the rows. The same name gives the same data in every process:
//   "100k", "1M", "10M"   a tree like a configuration, of about this size as compact JSON: maps of
//                         5 to 20 entries with random names, every fifth a map; numbers, strings,
//                         bools, short lists of numbers
//   "1Mv"                 such a tree whose keys are drawn from 400 words
//   "1600"                a flat map of this many keys "key0", "key1" ..., with numbers as values

#include <cstddef>
#include <string>

struct cData {
    std::string attr;        // our text over many lines, indented by two columns
    std::string json;        // the same entries as compact JSON
    std::size_t entries = 0; // members of maps and elements of lists
};

// Throws std::invalid_argument for any other name.
cData data_of(std::string const &name);

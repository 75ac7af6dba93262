#pragma once
// What differs between two values, by their fingerprints.

#include <string>

// What differs between a value and what was read again, for a message. The second fingerprint is
// empty if the text could not be read.
std::string what_differs(std::string const &image, std::string const &again, bool canonical);

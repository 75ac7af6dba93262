#pragma once
// Describes how two values differ, by their fingerprints.

#include <string>

// For a message: how a value differs from the value that was read again. The second fingerprint is
// empty if the text could not be read.
std::string what_differs(std::string const &fingerprint, std::string const &again, bool canonical);

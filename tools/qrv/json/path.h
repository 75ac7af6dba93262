#pragma once
// Paths of values in messages about JSON, in the form of the file format: a/b/0.

#include "qrv/core/cobj.h"

#include <string>
#include <vector>

using cJsonPath = std::vector<objref>; // the keys, from the outermost

// Returns ", at path 'a/b/0'", or "" for the outermost value.
std::string at_path(cJsonPath const &path);

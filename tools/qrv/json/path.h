#pragma once
// Paths of values in messages about JSON, in the form of the file format: a/b/0.

#include "qrv/core/cobj.h"

#include <string>
#include <vector>

using cJsonPath = std::vector<objref>; // the keys, from the outermost

// ", at path 'a/b/0'"; nothing for the outermost value.
std::string at_path(cJsonPath const &path);

#pragma once
// A hash of all that a file says of a value but comments and layout: types by name, keys in order,
// values to the last digit, which values are shared, what types declare. Two values are the same if
// their images are, but for a chance of about 1 in 2^128. Values of different processes can be
// compared so, and objects of declared types, whose `equal` goes by identity.

#include "qrv/core/cobj.h"

#include <string>

// O(size); ends on cycles, and as deep as the value may be.
std::string image_of(objref const &value);

// What differs between a value and what was read again, for a message. The second fingerprint is
// empty if the text could not be read.
std::string what_differs(std::string const &image, std::string const &again, bool canonical);

#pragma once
// Compares values by what a file would contain: also values of different processes, and objects of
// declared types, which are otherwise equal only to themselves.

#include "qrv/ccomp.h"
#include "qrv/core/cobj.h"

#include <string>

namespace qrv::edit {

// A hash of everything that the text of a value expresses, except comments and layout: types by
// name, keys in order, values to the last digit, which values are shared, what types declare. Two
// values with the same fingerprint are the same, except with a probability of about 1 in 2^128.
// After its last ':' it has the number of objects in the value. Accepts null. Ends on cycles.
// RUNS USER CODE: writes values of a program's types.   O(size)
QRV_API std::string fingerprint(objref const &value);

} // namespace qrv::edit

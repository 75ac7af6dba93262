#pragma once
// Are two values the same for a file? Also values of different processes, and objects of declared
// types, which are equal only to themselves.

#include "qrv/ccomp.h"
#include "qrv/core/cobj.h"

#include <string>

namespace qrv::edit {

// A hash of all that a file says of a value but comments and layout: types by name, keys in order,
// values to the last digit, which values are shared, what types declare. Two values are the same if
// their fingerprints are, but for a chance of about 1 in 2^128. After the last ':' is the number of
// their objects. Ends on cycles. RUNS USER CODE: values of a program's types are written.   O(size)
QRV_API std::string fingerprint(objref const &value);

} // namespace qrv::edit

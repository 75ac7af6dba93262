#pragma once
// Copies of maps, vectors and values that are wholly the library's, made directly: no user code
// would run while their types' methods made the same copies one by one, so nobody sees a
// difference.

#include "qrv/containers/cmapobj.h"

namespace cat {

// May assign copy the entries of this map or vector as they are: are its methods, its keys and the
// way in which values are stored the library's? O(n)
bool copies_plainly(cObj const &source);

// Does assigning to this set run only methods of the library? O(n)
bool is_plain_set(cObj const &set);

// The first step of attrcopy, for a target without entries: copies all entries of `source` if this
// may be done directly. Else false, and nothing is changed.
bool copy_plainly(cObj &target, cObj const &source);

// A clone of a string, number or bool that is the library's; null for any other value.
objref clone_plainly(cObj const &value);

} // namespace cat

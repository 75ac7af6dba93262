#pragma once
// Copies maps, vectors and values directly that use only methods of the library. Their types'
// methods would produce the same copies, slower, and run no user code either; so the difference is
// invisible.

#include "qrv/containers/cmapobj.h"

namespace cat {

// May assign copy the entries of this map or vector directly? Its methods and keys must be the
// library's, and it must store values without tests. O(n)
bool copies_plainly(cObj const &source);

// Does assigning to this set run only methods of the library? O(n)
bool is_plain_set(cObj const &set);

// The first step of attrcopy, for a target without entries: copies all entries of `source` if that
// can be done directly. If not, returns false and changes nothing.
bool copy_plainly(cObj &target, cObj const &source);

// A clone of a string, number or bool of the library's own type; null for any other value.
objref clone_plainly(cObj const &value);

} // namespace cat

#pragma once
// cObj::writeobj without the tests that the caller has made already.

#include "qrv/core/cobj.h"

#include <iosfwd>

// The constant's name, or the wrapper around `write`.
bool write_form(cObj const &obj, std::ostream &os);

// True, and the stream failed and the error told once, when the stack doesn't allow another level.
bool stack_ends(std::ostream &os);

// error: ambiguous (default type )?conversion
// A handle owns a count, not the object: deleting through it must not compile.
#include "qrv/core/cobj.h"

void f(objref ref) { delete ref; }

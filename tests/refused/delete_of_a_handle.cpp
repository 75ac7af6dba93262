// error: ambiguous (default type )?conversion
// A handle owns a reference, not the object: `delete` of a handle must not compile.
#include "qrv/core/cobj.h"

void f(objref ref) { delete ref; }

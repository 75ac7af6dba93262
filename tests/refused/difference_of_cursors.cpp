// error: .*deleted
// Without the deleted operator both would convert to bool, and the difference would be -1.
#include "qrv/containers/citerobj.h"
#include "qrv/core/cobj.h"

int f(cObj &obj) { return obj.end() - obj.begin(); }

// error: .*deleted
// Both cursors would convert to bool, and the difference of the bools would be -1.
#include "qrv/containers/citerobj.h"
#include "qrv/core/cobj.h"

int f(cObj &obj) { return obj.end() - obj.begin(); }

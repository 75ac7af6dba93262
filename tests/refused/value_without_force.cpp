// error: .*deleted (member )?function
// A handle would turn into a bool: the text form would be called with it as `force`.
#include "qrv/core/cobj.h"

bool f(cObj &obj, objref const &value) { return obj.setattrp("a/b", value); }

// error: .*deleted (member )?function
// A handle would convert to bool and become the argument `force` of the string form.
#include "qrv/core/cobj.h"

bool f(cObj &obj, objref const &value) { return obj.setattrp("a/b", value); }

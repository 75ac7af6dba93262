// error: .*deleted (member )?function
// Without the deleted overload the handle would convert to bool and become `force` of another one.
#include "qrv/core/cobj.h"

bool f(cObj &obj, objref const &value) { return obj.setattrp("a/b", value); }

// error: .*deleted
// The cursor would turn into a bool, and the object would be a bool.
#include "qrv/containers/citerobj.h"
#include "qrv/core/cobjd.h"

objref f(cIterObj const &it) { return cat::of(it); }

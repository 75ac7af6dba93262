// error: .*deleted
// The cursor would convert to bool, and the object would be created from that bool.
#include "qrv/containers/citerobj.h"
#include "qrv/core/cobjd.h"

objref f(cIterObj const &it) { return cat::of(it); }

// error: .*deleted
// The cursor would convert to bool and print 1.
#include "qrv/containers/citerobj.h"

#include <ostream>

void f(std::ostream &os, cIterObj const &it) { os << it; }

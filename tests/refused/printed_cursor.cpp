// error: .*deleted
// The cursor would turn into a bool, and a 1 would be printed.
#include "qrv/containers/citerobj.h"

#include <ostream>

void f(std::ostream &os, cIterObj const &it) { os << it; }

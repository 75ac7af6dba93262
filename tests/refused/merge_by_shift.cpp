// error: .*(is private within this context|is a private member)
// `a << b` with objects would read like appending and merge instead.
#include "qrv/core/cobj.h"

void f(cObj &a, cObj const &b) { a << b; }

// error: .*(is private within this context|is a private member)
// `a << b` with two objects would look like appending but merge them.
#include "qrv/core/cobj.h"

void f(cObj &a, cObj const &b) { a << b; }

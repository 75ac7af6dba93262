#pragma once
// Reading a text as a whole, in text/read/creader_method.cpp.

#include "qrv/text/read/cattrscan.h"

namespace cat {
// Reads the one value of a text, or a bare list of entries up to its end as a map. What is wrong is
// reported: also text behind the value, if nothing else is, and that there is no value. `result` is
// what was read, or as it was.
void scan_text(cAttrScan &scan, objref &result);
} // namespace cat

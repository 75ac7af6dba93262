#pragma once
// Reads whole text, in text/read/creader_method.cpp.

#include "qrv/text/read/cattrscan.h"

namespace cat {
// Reads the only value of the text, or a bare list of entries up to its end as a map. Reports all
// errors, also a missing value, and text after the value if there is no other error. If nothing was
// read, `result` is unchanged.
void scan_text(cAttrScan &scan, objref &result);
} // namespace cat

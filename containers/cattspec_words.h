#pragma once
// The three words of an attribute specification.

#include "qrv/core/cobj.h"

namespace cat {
struct cAttspecWords {
    objref required;
    objref implied;
    objref fixed;
};
cAttspecWords const &attspec_words();  // fetched on first use
int flags_of_word(objref const &word); // asf_required, asf_implied, asf_fixref; 0 for another value
} // namespace cat

// getslice: a part of anything that can be iterated, as a new vector that shares the values.

#include "qrv/containers/citerobj.h"
#include "qrv/containers/cvectorobj.h"

#include <algorithm>
#include <cstdint>

// A value of another type is omitted, but its position is counted.
objref cObj::getslice(int start, int count, cTypeObj *type) {
    objref const slice = make<cVectorObj>();
    std::int64_t const end = std::int64_t{start} + count;
    int const first = std::max(start, 0);
    if (first >= end) return slice;
    cIterObj it = begin();
    if (!it.valid() || !it.setpos(first)) return slice;
    for (std::int64_t i = first; i < end && it.valid(); ++i, ++it) {
        objref const value = it.valref();
        if (value && (!type || type == &value->type())) slice->append(value);
    }
    return slice;
}

#pragma once
// Shared by the tests of maps: short forms of specifications, and a custom map type.

#include "qrv/containers/cattspec.h"
#include "qrv/containers/cmapobj.h"
#include "qrv/core/ctypes.h"

inline specref spec_of(int flags, cTypeObj *type = nullptr) {
    return specref::adopt(new cAttspec(flags, type));
}
inline specref spec_with(objref const &value, int flags = 0) {
    return specref::adopt(new cAttspec(value, flags));
}

// A type whose objects are cMapObj, with its own methods.
struct cOwnType {
    cTypeObj type{"own_map", nullptr};
    cOwnType() { type.inherit(cat::type_map()); }
};

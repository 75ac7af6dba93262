#pragma once
// Shared by the tests of maps: short forms of specifications, and a custom map type.

#include "qrv/containers/cattspec.h"
#include "qrv/containers/cmapobj.h"
#include "qrv/core/ctypes.h"
#include "tests/support/objects.h"

inline specref spec_of(int flags, cTypeObj *type = nullptr) {
    return specref::adopt(new cAttspec(flags, type));
}
using test::spec_with;

// A type whose objects are cMapObj, with its own methods.
struct cOwnType {
    cTypeObj type{"own_map", nullptr};
    cOwnType() { type.inherit(cat::type_map()); }
};

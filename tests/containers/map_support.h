#pragma once
// What the tests of maps share: specifications in short, and a map type of one's own.

#include "qrv/containers/cattspec.h"
#include "qrv/containers/cmapobj.h"
#include "qrv/core/ctypes.h"
#include "tests/support/objects.h"

inline specref spec_of(int flags, cTypeObj *type = nullptr) {
    return specref::adopt(new cAttspec(flags, type));
}
using test::spec_with;

// A type whose objects are cMapObj, with methods of its own.
struct cOwnType {
    cTypeObj type{"own_map", nullptr};
    cOwnType() { type.inherit(cat::type_map()); }
};

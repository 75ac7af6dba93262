#pragma once
// Objects as maps, without the cost of a dynamic_cast.

#include "qrv/containers/cmapobj.h"

#include <cassert>

namespace cat {
// The object as a map; null if it is not one, or while its entries are being released.
inline cMapObj *as_map(cObj *obj) noexcept {
    if (!obj || obj->object_class() != cObjClass::map) return nullptr;
    assert(dynamic_cast<cMapObj *>(obj));
    return static_cast<cMapObj *>(obj);
}
inline cMapObj const *as_map(cObj const *obj) noexcept { return as_map(const_cast<cObj *>(obj)); }
} // namespace cat

#pragma once
// Comparing containers that may be shared in many places, or hold themselves.
//
// Rules
//   - One memo for each outermost comparison. A pair that was compared is not compared again, so
//     shared parts cost once.
//   - A pair that is being compared further out counts as equal: two cycles are equal when no
//     difference is found anywhere. An answer "equal" that may rest on such an assumption is
//     dropped from the memo when the assumption turns out wrong; "unequal" always stands.
//   - Pairs are known by the ids of their objects, which are never used twice. Objects off the
//     census have none; they are compared as often as they are met.
//   - Where the stack ends the answer is "unequal", with an error.

#include "qrv/containers/cmapobj.h"

#include <cassert>
#include <cstdint>

namespace cat {
enum class cCompareKind : std::uint32_t { map_in_order, map_by_key, vector, set };
using compare_function = bool (*)(cMapObj const &a, cMapObj const &b);

// compare(a, b), remembered. a and b are of one size already.
bool compared(cCompareKind kind, cMapObj const &a, cMapObj const &b, compare_function compare);

// The object as a map; null if it is not one, or while its entries are being released.
inline cMapObj *as_map(cObj *obj) noexcept {
    if (!obj || obj->object_class() != cObjClass::map) return nullptr;
    assert(dynamic_cast<cMapObj *>(obj));
    return static_cast<cMapObj *>(obj);
}
inline cMapObj const *as_map(cObj const *obj) noexcept { return as_map(const_cast<cObj *>(obj)); }
// The argument of an `equal`: null if it is not a map object or of another size. Objects of
// declared and inherited types are map objects, although their types lack tf_container.
cMapObj *comparable(cMapObj const &a, objref const &b) noexcept;

// The same object, or equal. Null equals only null.
bool same_value(objref const &a, objref const &b);

// Of keys: the same object, or the same for the first one's type.
bool same_key(objref const &a, objref const &b);

// Reports, and is false: "Nesting is too deep in object type: " and the type's name, 0x40000001.
bool too_deep(cObj const &obj);
} // namespace cat

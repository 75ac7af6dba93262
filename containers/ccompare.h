#pragma once
// Compares containers that may be shared in many places, or contain themselves.
//
// Rules
//   - Each outermost comparison has one memo. It compares each pair once, so a shared part costs
//     time once.
//   - A pair whose comparison is in progress in an outer call counts as equal: two cycles are equal
//     if no difference is found anywhere. A result "equal" that may depend on such an assumption is
//     removed from the memo if the assumption turns out wrong; a result "unequal" stays.
//   - The memo identifies objects by their ids, which are never used twice. Objects that the census
//     does not count have no id and are compared each time.
//   - If the stack is exhausted, the result is "unequal", with an error.

#include "qrv/containers/cmapobj.h"

#include <cstdint>

namespace cat {
enum class cCompareKind : std::uint32_t { map_in_order, map_by_key, vector, set };
using compare_function = bool (*)(cMapObj const &a, cMapObj const &b);

// compare(a, b) with the memo. a and b must have the same size.
bool compared(cCompareKind kind, cMapObj const &a, cMapObj const &b, compare_function compare);

// The argument of an `equal` as a map object; null if it isn't one or has another size. Objects of
// declared and derived types are map objects, although their types lack tf_container.
cMapObj *comparable(cMapObj const &a, objref const &b) noexcept;

// Are both the same object, or equal? Null equals only null.
bool same_value(objref const &a, objref const &b);

// Are both keys the same object, or equal for the first one's type?
bool same_key(objref const &a, objref const &b);

// Reports "Nesting is too deep in object type: " with the type's name, 0x40000001. Returns false.
bool too_deep(cObj const &obj);
} // namespace cat

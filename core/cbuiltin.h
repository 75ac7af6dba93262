#pragma once
// Tests whether an object uses only methods of the library. Accessing such an object directly has
// the same effect as calling the methods of its type, and user code cannot notice the difference.
//
// Each test takes a few instructions. It covers neither what a container holds nor destructors: an
// object whose class a program derived from cObjD<T> or cMapObj passes.

#include "qrv/core/cobjd.h"

#include <utility>

namespace cat {

constexpr unsigned method_bit(method_id id) noexcept { return 1U << id; }

// A bit for each method, as in method_bits(mid_write, mid_iterobj).
template <class... Ids> constexpr unsigned method_bits(Ids... ids) noexcept {
    return (method_bit(ids) | ...);
}

// Is this the type string, int, float, double, bool, map, vector or set, and is each of these
// methods still the library's?
inline bool is_builtin(cTypeObj const &type, unsigned methods) noexcept {
    return (~type.library_methods() & methods) == 0 && type.value_class() != cObjClass::other;
}

// Is the object of such a type, of the class that belongs to the type, and without its own
// executables? An object that refers to a value elsewhere (cObjDR) may lack the value.
inline bool is_builtin(cObj const &obj, unsigned methods) noexcept {
    cTypeObj const &type = obj.type();
    return is_builtin(type, methods) && type.value_class() == obj.object_class() &&
           !obj.flags_of(of_exe_member);
}

// make<cObjD<T>>(value) without the call of `create`, which does nothing for these types.
template <class T> [[nodiscard]] objref make_value(T value) {
    cTypeObj &type = cTypeOf(static_cast<T *>(nullptr));
    if (!is_builtin(type, method_bit(mid_create))) return make<cObjD<T>>(value);
    return make<cObjD<T>>(std::move(value), cBuiltinType{&type});
}

} // namespace cat

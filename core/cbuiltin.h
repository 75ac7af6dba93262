#pragma once
// Which objects are wholly the library's: then handling one directly has the same effect as calling
// the methods of its type, and no user code can notice.
//
// The tests are a few instructions each. They say nothing of what a container holds, and nothing of
// destructors: a class that a program has derived from cObjD<T> or cMapObj passes them.

#include "qrv/core/cobjd.h"

#include <utility>

namespace cat {

constexpr unsigned method_bit(method_id id) noexcept { return 1U << id; }

// Bits of several methods: method_bits(mid_write, mid_iterobj).
template <class... Ids> constexpr unsigned method_bits(Ids... ids) noexcept {
    return (method_bit(ids) | ...);
}

// Is this string, int, float, double, bool, map, vector or set, and is each of these methods still
// the library's own?
inline bool is_builtin(cTypeObj const &type, unsigned methods) noexcept {
    return (~type.library_methods() & methods) == 0 && type.value_class() != cObjClass::other;
}

// Is the object of such a type, of the class of its objects, and without executables of its own?
// An object that refers to a value (cObjDR) may have none.
inline bool is_builtin(cObj const &obj, unsigned methods) noexcept {
    cTypeObj const &type = obj.type();
    return is_builtin(type, methods) && type.value_class() == obj.object_class() &&
           !obj.flags_of(of_exe_member);
}

// make<cObjD<T>>(value), without a call of `create` that does nothing.
template <class T> [[nodiscard]] objref make_value(T value) {
    cTypeObj &type = cTypeOf(static_cast<T *>(nullptr));
    if (!is_builtin(type, method_bit(mid_create))) return make<cObjD<T>>(value);
    return make<cObjD<T>>(std::move(value), cBuiltinType{&type});
}

} // namespace cat

#pragma once
// How the library reads the value of a scalar object, and what the bootstrap calls to make the
// scalar types: their set-up functions, and what is added after all of them exist.

#include "qrv/core/cobjd.h"
#include "qrv/core/ctypes.h"

#include <cassert>

namespace cat {
// The T that an object holds, borrowed; null for a null object and for one that does not hold a T,
// since set_type lets any object claim any type. T is one of the five built-in kinds of values.
template <class T> T const *value_in(cObj const *obj) noexcept {
    static_assert(class_of_value<T> != cObjClass::other);
    bool const holds = obj && obj->object_class() == class_of_value<T>;
    assert(holds == (dynamic_cast<cObjDR<T> const *>(obj) != nullptr));
    return holds ? static_cast<cObjDR<T> const *>(obj)->valptr() : nullptr;
}
// The same, to be changed at once.
template <class T> T *value_to_change(cObj *obj) noexcept {
    return value_in<T>(obj) ? static_cast<cObjDR<T> *>(obj)->value_to_change() : nullptr;
}
// Is the type exactly the library's string?
inline bool is_string(objref const &value) { return value && &value->type() == &type_string(); }
// The set-up functions of the types.
void setup_string(cTypeObj &type);
void setup_bool(cTypeObj &type);
void setup_int(cTypeObj &type);
void setup_float(cTypeObj &type);
void setup_double(cTypeObj &type);
void set_scalar_additions(); // "add", and the "size" of a string
void set_scalar_converters();
// The method "assign" of int, for types that stand on it: the same type, else by converter.
bool assign_int(cObj &obj, objref &source);
// Is this type exactly the library's string, int or bool, without an "equal" that a program gave
// it? Then two objects are equal when their values are, and comparing them runs no user code.
bool compares_plainly(cTypeObj const &type) noexcept;
// Does the object hold a string, int or bool, and is it of such a type?
bool is_plain(cObj const &value) noexcept;
} // namespace cat

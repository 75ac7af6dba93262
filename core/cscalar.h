#pragma once
// Access to the value of a scalar object, and the functions by which the bootstrap sets up the
// scalar types.

#include "qrv/core/cobjd.h"
#include "qrv/core/ctypes.h"

#include <cassert>

namespace cat {
// The T that an object holds, borrowed. Null for a null object and for an object that does not hold
// a T: set_type lets any object claim any type. T is one of the five built-in kinds of values.
template <class T> T const *value_in(cObj const *obj) noexcept {
    static_assert(class_of_value<T> != cObjClass::other);
    bool const holds = obj && obj->object_class() == class_of_value<T>;
    assert(holds == (dynamic_cast<cObjDR<T> const *>(obj) != nullptr));
    return holds ? static_cast<cObjDR<T> const *>(obj)->valptr() : nullptr;
}
// The same, for a caller that changes the value and does not store the pointer.
template <class T> T *value_to_change(cObj *obj) noexcept {
    return value_in<T>(obj) ? static_cast<cObjDR<T> *>(obj)->value_to_change() : nullptr;
}
// Is the type exactly the library's string?
inline bool is_string(objref const &value) { return value && &value->type() == &type_string(); }

void setup_string(cTypeObj &type);
void setup_bool(cTypeObj &type);
void setup_int(cTypeObj &type);
void setup_float(cTypeObj &type);
void setup_double(cTypeObj &type);
void set_scalar_additions(); // after all scalar types exist: "add", and the "size" of a string
void set_scalar_converters();
// The method "assign" of int, for types that are based on int. Copies a value of the same type, and
// converts others.
bool assign_int(cObj &obj, objref &source);
// Is this exactly the library's string, int or bool, without a program's "equal"? Then comparing
// two objects compares their values and runs no user code.
bool compares_plainly(cTypeObj const &type) noexcept;
// Does the object hold a string, int or bool, and does its type compare plainly?
bool is_plain(cObj const &value) noexcept;
} // namespace cat

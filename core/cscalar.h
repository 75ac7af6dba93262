#pragma once
// How the library reads the value of a scalar object, and what the bootstrap calls to make the
// scalar types: their set-up functions, and what is added after all of them exist.

#include "qrv/core/cobjd.h"

#include <typeinfo>

namespace cat {
// The T that an object holds, borrowed; null for a null object and for one that does not hold a T,
// since set_type lets any object claim any type. The usual classes need no dynamic_cast.
template <class T> T *value_in(cObj const *obj) noexcept {
    if (!obj) return nullptr;
    std::type_info const &exact = typeid(*obj);
    bool const owns = exact == typeid(cObjD<T>);
    bool const is_usual = owns || exact == typeid(cObjDR<T>);
    auto const *const holder =
        is_usual ? static_cast<cObjDR<T> const *>(obj) : dynamic_cast<cObjDR<T> const *>(obj);
    return holder ? holder->valptr() : nullptr;
}
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
} // namespace cat

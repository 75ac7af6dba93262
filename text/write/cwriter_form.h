#pragma once
// Determines which code writes an object: the library itself, in one of its forms, or a method of
// the object or of its type, which counts as user code.

#include "core/cattrhash_insert.h"
#include "core/cbuiltin.h"
#include "core/cregistry.h"
#include "qrv/containers/csetobj.h"
#include "qrv/containers/cvectorobj.h"
#include "qrv/text/write/cwriter.h"
#include "text/write/cscalar_text.h"

// Up to `boolean`, the enumerators have the values of those of cObjClass; see form_of_token().
enum class cForm : unsigned char { user, string, integer, single, dbl, boolean, map, vector, set };

// The form in which the type's method `write` writes.
inline cForm form_of(cTypeObj const &type) {
    cVoidFunction const method = type.method(mid_write);
    auto const is = [method](bool (*own)(cObj &, objref &)) {
        return method == reinterpret_cast<cVoidFunction>(own);
    };
    if (is(cat::write_string)) return cForm::string;
    if (is(cat::write_int)) return cForm::integer;
    if (is(cat::write_double)) return cForm::dbl;
    if (is(cTomMap::m_write)) return cForm::map;
    if (is(cat::write_bool)) return cForm::boolean;
    if (is(cat::write_float)) return cForm::single;
    if (is(cTomVector::m_write)) return cForm::vector;
    if (is(cTomSet::m_write)) return cForm::set;
    return cForm::user;
}

inline cForm form_of(cObj const &obj) {
    if (obj.flags_of(of_exe_member)) return cForm::user; // the object may have its own `write`
    return form_of(obj.type());
}

inline bool is_container(cForm form) { return form >= cForm::map; }
inline bool is_scalar(cForm form) { return form != cForm::user && !is_container(form); }

// An object of the library's own string, number or bool: written without a type name and without
// user code.
inline bool is_token(cObj const &obj) {
    return cat::is_builtin(obj, cat::method_bit(mid_write)) && obj.type().flags_of(tf_bare) &&
           obj.object_class() != cObjClass::map;
}

inline cForm form_of_token(cObj const &obj) {
    static_assert(static_cast<int>(cForm::boolean) == static_cast<int>(cObjClass::boolean));
    return static_cast<cForm>(obj.object_class());
}

// Whether the key is a string that begins with '#'. Such keys never occur in plain text.
inline bool is_hidden(cObj const &key) {
    if (&key.type() != core.string) return false;
    std::string const *const text = value_of<std::string>(key);
    return text && !text->empty() && text->front() == '#';
}

inline bool appears_in_plain(cAttrNode const &node) {
    bool const hidden = !cAttrInsert::is_lazy_number(node) && is_hidden(*node.key());
    return !hidden && (is_token(node.value()) || node.value().is_writable());
}

#pragma once
// One entry of one object: finding, writing and removing it. The library's containers are read
// directly. All other reading, and all writing, calls the methods of the object's type.

#include "value/path.h"

#include "containers/as_map.h"
#include "qrv/containers/cmapobj.h"
#include "qrv/core/cobjd.h"

namespace qrv::detail {

// The value of an object of the class that holds a T.
template <class T> T const &data_of(cObj const &object) {
    return static_cast<cObjDR<T> const &>(object).val();
}

// Is this a container of the library whose type still has the library's own method, without own
// methods and without the flags `other`?
bool uses_library_method(cObj const &object, method_id method, int other = 0) noexcept;

// The value at a key, borrowed from the object or from `keep`; null if the key does not exist. If a
// map does not have the int `key`, the function looks for it as a string and, if that exists, sets
// `key` to the string. RUNS USER CODE for types of the program.
cObj *entry_of(cObj &object, step &key, objref &keep);

// Returns false, after a key without a value. Reads the remaining keys, since faulty text in them
// is an error.
template <class Keys> bool absent(Keys &keys) {
    for (step key; keys.next(key);) {
    }
    return false;
}

// Sets `to` to the value to which the keys lead; false if one of the keys does not exist.
template <class Keys> bool walk(objref const &root, Keys &keys, spot &to) {
    step key;
    cObj *at = root.get();
    while (keys.next(key)) {
        at = at ? entry_of(*at, key, to.keep) : nullptr;
        if (!at) return absent(keys);
    }
    to.object = at;
    return true;
}

// Can entries of the object be written?
bool is_writable(cObj const &object);
// error: x contains `owner`. `handles` is the number of owners of `owner` that are known not to be
// containers: if it has no others, x is not searched.
void refuse_cycle(objref const &owner, value const &x, unsigned handles = 0);
// Stores the value with the type's method, and reports the change. Throws if the type refuses the
// value, or if the owner would become a part of itself. The exception has no path.
void write_entry(objref const &owner, step const &key, value const &x);
// False if there is no such entry. Throws if the type refuses.
bool remove_entry(objref const &owner, step key);
// Appends the value to a vector or set. False if a set has an equal value. The caller of this
// function or of insert_value() must hold two references to `owner`.
bool append_value(objref const &owner, value const &x);
// Inserts x before the value at a position of a vector.
void insert_value(objref const &owner, int position, value const &x);

bool is_choice_type(cTypeObj const &type) noexcept;
bool is_attribute_set_type(cTypeObj const &type) noexcept;
// The key of the choice, such as "slow"; null if the object is not a choice or the choice is
// undefined.
objref choice_key_of(cObj const *object);
// Sets the choice to the key x, or to the key of the choice x. type_error: its type does not have
// the key.
void assign_choice(cObj &choice, objref const &x);

// The written form with all digits; if a part, such as an infinity, has no exact text, the plain
// form with six digits. Sets `is_whole` to false if a part is missing in that form, too.
// RUNS USER CODE
std::string shown_text(objref const &object, bool *is_whole = nullptr);

// "a string: "fast"", "a map", "nil", "an object of type Axis".
std::string description(value const &v);

} // namespace qrv::detail

#pragma once
// One entry of one object: finding, writing and removing it. The containers of the library are read
// directly; all other objects, and every write, go by the methods of their types.

#include "value/path.h"

#include "qrv/containers/cmapobj.h"

namespace qrv::detail {

// The object as a container with entries in a hash; null for others.
inline cMapObj *map_of(cObj *object) noexcept {
    return object && object->object_class() == cObjClass::map ? static_cast<cMapObj *>(object)
                                                              : nullptr;
}

// Does the object have the library's own method, and a hash that the method works on? Of the types
// with methods of the library only containers have these. `other`: flags that it may not have.
bool is_plain(cObj const &object, method_id method, int other = 0) noexcept;

// The value at a key, borrowed from the object or from `keep`; null where nothing is there. An int
// that a map does not have is looked up as a string, and `key` is that string then. RUNS USER CODE
// for types of the program.
cObj *entry_of(cObj &object, step &key, objref &keep);

// False, for a key that nothing is at; the keys after it may be faulty text.
template <class Keys> bool absent(Keys &keys) {
    for (step key; keys.next(key);) {
    }
    return false;
}

// What is at the end of the keys; false where nothing is there.
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
// error: x has `owner` somewhere in it. So many owners of `owner`, `handles`, are known not to be
// containers: where it has no others, x is not searched.
void refuse_cycle(objref const &owner, value const &x, unsigned handles = 0);
// Stores the value by the type's method, and reports the change. Throws where the type refuses, and
// where the owner would become a part of itself; the exception has no path.
void write_entry(objref const &owner, step const &key, value const &x);
// False if nothing is there.
bool remove_entry(objref const &owner, step key);
// A vector or set gets the value after its last one. False if a set has an equal value. Here and
// in insert_value() two owners of `owner` are the caller's own.
bool append_value(objref const &owner, value const &x);
// In front of the value at a position of a vector.
void insert_value(objref const &owner, int position, value const &x);

// Is the object of a choice type?
bool is_choice(cObj const &object) noexcept;
// The key of the choice, such as "slow"; null where the object is not a choice, or undefined.
objref choice_key_of(cObj const *object);
// Sets the choice to that key, or to that of another choice. type_error: it does not have the key.
void assign_choice(cObj &choice, objref const &x);

// The written form with all digits, or without them where a part, such as an infinity, has no such
// form. `is_whole` becomes false where a part is missing. RUNS USER CODE
std::string shown_text(objref const &object, bool *is_whole = nullptr);

// "a string: "fast"", "a map", "nil", "an object of type Axis".
std::string description(value const &v);

} // namespace qrv::detail

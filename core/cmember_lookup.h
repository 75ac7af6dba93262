#pragma once
// Finds members by name for callers that know the hash of the name. Each hash table is searched
// once.

#include "core/cattrhash_insert.h"
#include "qrv/core/cexe.h"

namespace cat {

using cMemberName = cAttrInsert::cKnownText;

// Like cObj::gmember and cat::gmember. Creates a key object and RUNS USER CODE only if a key of a
// searched table, or the type string, has its own hooks or methods.
objref member_named(cObj const &obj, cMemberName const &name);
objref global_member_named(cMemberName const &name);

// cObj::call with one argument; true if the result is good. In core/cexe_call.cpp.
bool call_succeeds(cObj &obj, cMemberName const &name, objref const &a);

// Borrowed; null if the object is not an executable.
inline cExeObj *as_exe(cObj *obj) noexcept {
    if (obj && obj->object_class() == cObjClass::executable) return static_cast<cExeObj *>(obj);
    return dynamic_cast<cExeObj *>(obj); // of a class with two bases that are objects
}

} // namespace cat

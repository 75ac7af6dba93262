#pragma once
// Members by name, for callers that know the hash of the name: each hash is searched once with it.

#include "core/cattrhash_insert.h"
#include "qrv/core/cexe.h"

namespace cat {

using cMemberName = cAttrInsert::cKnownText;

// As cObj::gmember and cat::gmember. A key object is created, and user code runs, only where a key
// of such a hash or the type string has hooks or methods of its own.
objref member_named(cObj const &obj, cMemberName const &name);
objref global_member_named(cMemberName const &name);

// cObj::call with one argument: is the result good? core/cexe_call.cpp
bool call_succeeds(cObj &obj, cMemberName const &name, objref const &a);

// Borrowed; null if the object is not an executable.
inline cExeObj *as_exe(cObj *obj) noexcept {
    if (obj && obj->object_class() == cObjClass::executable) return static_cast<cExeObj *>(obj);
    return dynamic_cast<cExeObj *>(obj); // of a class with two bases that are objects
}

} // namespace cat

#pragma once
// The process-wide state of the object system: types by name, named constants, global members, a
// free data base. All of it is made in one ordered step, core_bootstrap, the first time anyone
// asks for any of it, and torn down at process exit.

#include "qrv/core/ctypeobj.h"

// Makes the whole core; does nothing while it runs, stands or is being torn down.
QRV_API void core_bootstrap();

namespace cat {
enum class cCoreState { none, running, ready, tearing };
QRV_API cCoreState core_state() noexcept;

// The built-in types.
QRV_API cTypeObj &type_string();
QRV_API cTypeObj &type_nil();
QRV_API cTypeObj &typetype(); // the metatype of ordinary types
QRV_API cTypeObj &type_exe();
QRV_API cTypeObj &type_bool();
QRV_API cTypeObj &type_int();
QRV_API cTypeObj &type_float();
QRV_API cTypeObj &type_double();
QRV_API cTypeObj &type_map();
QRV_API cTypeObj &type_set();
QRV_API cTypeObj &type_vector();
QRV_API cTypeObj &type_iterator();
QRV_API cTypeObj &typetype_choice();
QRV_API cTypeObj &type_attspec();
QRV_API cTypeObj &typetype_attlist();

// The constants: no value, failure, nothing found; true and false.
QRV_API objref const &nil();
QRV_API objref const &bad();
QRV_API objref const &badfind();
QRV_API objref const &btrue();
QRV_API objref const &bfalse();

// The maps, and the same by pointer: null until they are made.
QRV_API cMapObj &typemap();
QRV_API cMapObj &constmap();
QRV_API cMapObj &gmmap();
QRV_API cMapObj &dbase();
QRV_API cMapObj *typemap_ptr() noexcept;
QRV_API cMapObj *constmap_ptr() noexcept;
QRV_API cMapObj *gmmap_ptr() noexcept;
QRV_API cAttrHash *type_hash_ptr() noexcept;
// The entry of constmap whose value is this very object, or null. Linear in the constants.
QRV_API cAttrNode const *find_const(cObj const *obj) noexcept;

// The type of that name, made by a registered factory if need be; cat::type_nil() if none.
QRV_API cTypeObj &find_type(std::string const &name);
// A type from a type or from a string that names one; else bad.
QRV_API objref type_of_key(objref const &value);
} // namespace cat

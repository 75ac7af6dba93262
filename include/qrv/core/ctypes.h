#pragma once
// The process-wide state of the object system: types by name, named constants, global members, and
// a map for free use. core_bootstrap creates all of it in one ordered step when any of it is first
// used; the end of the process destroys it.

#include "qrv/core/ctypeobj.h"

// Creates the core. No effect if it exists, is being created or is being destroyed.
QRV_API void core_bootstrap();

namespace cat {
enum class cCoreState { none, running, ready, tearing };
// `running`: the core is being created. `tearing`: it is being destroyed.
QRV_API cCoreState core_state() noexcept;

// The built-in types. The object core is started if necessary.
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

// The constants: no value, failure, nothing found; true and false. Never null.
QRV_API objref const &nil();
QRV_API objref const &bad();
QRV_API objref const &badfind();
QRV_API objref const &btrue();
QRV_API objref const &bfalse();

// The maps. The functions that return pointers do not start the core; they return null until the
// maps are created.
QRV_API cMapObj &typemap();
QRV_API cMapObj &constmap();
QRV_API cMapObj &gmmap();
QRV_API cMapObj &dbase();
QRV_API cMapObj *typemap_ptr() noexcept;
QRV_API cMapObj *constmap_ptr() noexcept;
QRV_API cMapObj *gmmap_ptr() noexcept;
QRV_API cAttrHash *type_hash_ptr() noexcept;
// The entry of constmap whose value is this object, borrowed, or null. Linear in the number of
// constants.
QRV_API cAttrNode const *find_const(cObj const *obj) noexcept;

// The registered type of that name, or else one that a registered factory creates, or else
// cat::type_nil(). RUNS USER CODE: the factory
QRV_API cTypeObj &find_type(std::string const &name);
// A type from a type or from a string with its name; else bad. RUNS USER CODE, as find_type
QRV_API objref type_of_key(objref const &value);
} // namespace cat

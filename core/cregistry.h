#pragma once
// The process-wide pointers of the object core, each null until the bootstrap has filled it. The
// library reads them directly where null is possible or where the accessors' test for start-up is
// too expensive. All other code uses the accessors of qrv/core/ctypes.h.

#include "qrv/core/ceros.h"
#include "qrv/core/ctypes.h"

#include <typeinfo>
#include <vector>

// name in the registry, name of the accessor, written name
#define QRV_CORE_TYPES(X)                                                                          \
    X(string, type_string, "string")                                                               \
    X(niltype, type_nil, "niltype")                                                                \
    X(type, typetype, "type")                                                                      \
    X(exe, type_exe, "exe")                                                                        \
    X(boolean, type_bool, "bool")                                                                  \
    X(integer, type_int, "int")                                                                    \
    X(float_number, type_float, "float")                                                           \
    X(double_number, type_double, "double")                                                        \
    X(map, type_map, "map")                                                                        \
    X(set, type_set, "set")                                                                        \
    X(vector, type_vector, "vector")                                                               \
    X(iterator, type_iterator, "iterator")                                                         \
    X(choice, typetype_choice, "choice")                                                           \
    X(attspec, type_attspec, "attspec")                                                            \
    X(attlist, typetype_attlist, "attlist")

#define QRV_CORE_CONSTANTS(X)                                                                      \
    X(nil)                                                                                         \
    X(bad)                                                                                         \
    X(badfind)                                                                                     \
    X(btrue)                                                                                       \
    X(bfalse)

struct cCore {
#define QRV_FIELD(name, accessor, text) cTypeObj *name;
    QRV_CORE_TYPES(QRV_FIELD)
#undef QRV_FIELD
#define QRV_FIELD(name) objref *name;
    QRV_CORE_CONSTANTS(QRV_FIELD)
#undef QRV_FIELD
    cMapObj *typemap;
    cMapObj *constmap;
    cMapObj *gmmap;
    cMapObj *dbase;
    cAttrHash *type_hash;   // what typemap shares
    cAttrHash *const_hash;  // what constmap shares
    cAttrHash *global_hash; // what gmmap shares
    cSignal1<cErr &> *sig_error;
    cErrHandler *errhandler;
    cErrStream *eros;
    bool core_ready; // the four first types are linked
    cat::cCoreState state;
    std::uint32_t counting_types; // living types that count their objects

    // Higher layers install these; null until then.
    typeref (*make_type)(std::string const &name); // by a factory, or null; before the first types
    void (*fire_changed)(cObj const &obj);         // with the first type of a signal or slot
    // Releases the types that have left a scope, and destroys types that only hold each other.
    void (*free_types)(std::vector<typeref> &left);
    std::type_info const *map_classes[3]; // cMapObj and its own subclasses
};

extern constinit cCore core;

namespace cat {
void create_core(); // start/bootstrap.cpp; for core_bootstrap() alone

// Is the object exactly of a class of the library, so that only what it holds can run user code
// when it is destroyed?
bool is_library_class(cObj const &obj) noexcept;
// Destroys an object that only the caller holds if it is a scalar of the library's own class
// without members. Runs no user code. False, without an effect, for all other objects.
bool destroy_scalar(cObj *target);

// cat::detach for the value alone, without the values below it.
bool detach_value(objref const &ref);

// Throws cErr(1): the name of a type is taken.
[[noreturn]] void throw_duplicate(std::string const &name);

// The method `assign` of strings. The first types need it before members exist.
bool assign_string(cObj &obj, objref &source);
} // namespace cat

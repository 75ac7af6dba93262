#pragma once
// Shared by map, vector and set: the list of their methods, and tests of their values.

#include "core/ctext_hooks.h"
#include "qrv/containers/cmapobj.h"

namespace cat {

// The methods in which the three types differ.
struct cContainerMethods {
    cFunction1 newobj;
    cProcedure2 assign;
    cProcedure2 add;
    cProcedure3 setattr;
    cFunction2 getattr;
    cTextMethods text;
    cProcedure2 equal;
    cProcedure2 append;
};
void setup_container(cTypeObj &type, cContainerMethods const &own, char const *wformat);

// Call for a new type. Remembers its `iterobj`, which returns no iterator, so that walks can skip
// values of such types without a call.
void note_default_iterobj(cTypeObj const &type) noexcept;
// Can this value hold other values?
bool may_hold_values(cObj const &obj) noexcept;

// True if only containers of the library are below these values, and `other` isn't one of them.
bool is_plainly_apart(cAttrHash const &values, cObj const &other);

// Does the map have an entry type that differs from the type of this value? False for a value that
// removes.
bool refuses_type(cMapObj const &map, objref const &value) noexcept;

// Compares the values of both rings in order, without their keys.
bool equal_values_in_order(cMapObj const &a, cMapObj const &b);
// Reports that the walks over two rings of the same size had different lengths. Returns false.
bool report_sizes(cMapObj const &a, cMapObj const &b);

// The set-up functions of the container types, for the bootstrap.
void setup_map(cTypeObj &type);
void setup_set(cTypeObj &type);
void setup_vector(cTypeObj &type);
void setup_iterator(cTypeObj &type);
void setup_choice(cTypeObj &type);
void setup_attspec(cTypeObj &type);
void setup_attlist(cTypeObj &type);

} // namespace cat

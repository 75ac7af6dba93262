#pragma once
// What map, vector and set share: the list of their methods, and tests of their values.

#include "core/ctext_hooks.h"
#include "qrv/containers/cmapobj.h"

namespace cat {

// The entries in which the three types differ.
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

// A fresh type still has the method that gives no iterator: remembered, so that walks can skip
// values of such types without a call.
void note_default_iterobj(cTypeObj const &type) noexcept;
// Could anything stand below this value?
bool may_hold_values(cObj const &obj) noexcept;

// True when only containers of the library are below these values, and `other` isn't there.
bool is_plainly_apart(cAttrHash const &values, cObj const &other);

// An entry type is set, and the value, unless it removes, is of another one.
bool refuses_type(cMapObj const &map, objref const &value) noexcept;

// The values of both rings in order, without their keys.
bool equal_values_in_order(cMapObj const &a, cMapObj const &b);
// Two rings of one size ended apart. False.
bool report_sizes(cMapObj const &a, cMapObj const &b);

// The set-up functions of the container types, which the bootstrap passes.
void setup_map(cTypeObj &type);
void setup_set(cTypeObj &type);
void setup_vector(cTypeObj &type);
void setup_iterator(cTypeObj &type);
void setup_choice(cTypeObj &type);
void setup_attspec(cTypeObj &type);
void setup_attlist(cTypeObj &type);

} // namespace cat

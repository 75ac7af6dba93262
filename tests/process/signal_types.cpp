// The types of signals and slots are created on their first use, and a program that has used one of
// their names before keeps its own type. Returns the number of the failed check, or 0 if all
// succeed.

#include "qrv/containers/cmapobj.h"
#include "qrv/containers/csignalobj.h"
#include "qrv/core/cmodifier.h"

namespace {

bool registered(char const *name) { return cat::typemap().datamap().find(name); }

int first_use() {
    objref const obj = cat::of(1);
    obj->set_omember("k", cat::of(2));
    obj->changed();
    if (obj->changed_signal() || registered("cSignal")) return 1;
    auto const before = cObjBase::ob_count();
    cTypeObj const &type = cat::type_signal();
    if (cObjBase::ob_count() != before) return 2; // the library's own type, which is not counted
    if (!registered("cSignal") || &type != &cat::find_type("cSignal")) return 3;
    if (registered("cSignal1") || registered("cSigInfo") || registered("objslot1")) return 4;
    obj->force_changed_signal();
    return &obj->omember("changed")->type() == &type ? 0 : 5;
}

int taken_name() {
    cTypeObj &own = *new cTypeObj("objslot1");
    typeref const held = typeref::adopt(&own);
    cTypeInsert const entry(own);
    objref const target = cat::of(1);
    cSignal const signal;
    cObjSlot const slot(
        *target, [](cObj &obj) { return obj.set_omember("fired", cat::nil()); }, signal);
    if (&slot.type() == &own || slot.type().name() != "objslot1") return 6;
    if (&cat::find_type("objslot1") != &own || &cat::type_slot1() != &slot.type()) return 7;
    signal();
    return target->has_ommap() ? 0 : 8;
}

// A type that a program removes from the registry is still the library's type.
int removed_type() {
    cTypeObj const &type = cat::type_signal1();
    cat::typemap().datamap().delitem("cSignal1");
    cSignalObj1 const signal(true);
    return &signal.type() == &type && type.name() == "cSignal1" ? 0 : 9;
}

} // namespace

int main() {
    if (int const failed = first_use()) return failed;
    if (int const failed = taken_name()) return failed;
    return removed_type();
}

// Signal objects, slot objects, and the signal `changed` of every object.
//
// The five types are created on first use. They are held here and by the registry, so the library
// still has a type that a program removes from the registry. They belong to the library, so the
// census counts neither them nor their methods and keys.
//
// Only an object of class cSignalRef counts as a signal: any object can claim the type.

#include "qrv/containers/csignalobj.h"

#include "containers/csignalobj_types.h"
#include "core/cregistry.h"
#include "qrv/containers/cattr.h"
#include "qrv/core/cattrhash.h"
#include "qrv/core/cmodifier.h"

#include <memory>

namespace {

enum own_type { signal_type, signal1_type, siginfo_type, slot1_type, slot2_type, type_count };

constinit typeref *held_types[type_count] = {};

void take_off_census(cAttrHash const &members) {
    for (cAttrNode const *node = members.first(); node; node = members.next(node)) {
        node->key()->obid(0);
        cObj::obid(node->valref().get(), 0);
    }
}

void register_type(typeref const &type) {
    if (!cTypeInsert::insert(type, false)) return;
    if (cAttrNode const *const node = core.type_hash->find(type->name())) node->key()->obid(0);
}

void fire_changed(cObj const &obj) {
    if (cSignal const *const signal = obj.changed_signal())
        (*signal)(); // RE-ENTERS: may destroy the object
}

// Stores the new type before registering it, so that user code in the registration finds it.
cTypeObj &type_of(own_type id, char const *name, cTypeObj::setup_function setup) {
    if (held_types[id]) return **held_types[id];
    core_bootstrap();
    if (!core.core_ready) return cat::type_exe();
    typeref const type = typeref::adopt(new cTypeObj(name, setup));
    type->obid(0);
    take_off_census(type->tmmap());
    held_types[id] = new typeref(type);
    core.fire_changed = fire_changed;
    register_type(type); // RE-ENTERS: prints a duplicate
    return *type;
}

void set_makers(cTypeObj &type, cFunction1 newobj, cFunction1 newref) {
    type.set_tmember("newobj", make<cExeMember>(newobj));
    type.set_tmember("newref", make<cExeMember>(newref));
}

objref new_signal(objref) { return make<cSignalObj>(); }
objref new_signal1(objref) { return make<cSignalObj1>(false); }
objref new_siginfo(objref) { return make<cObjD<cSigInfo>>(); }

// The new object refers to the signal of the source and doesn't keep it alive.
objref refer_to_signal(objref source) {
    auto *const ref = dynamic_cast<cSignalRef *>(source.get());
    return ref && ref->signal_ptr() ? objref(make<cSignalRef>(ref->signal())) : cat::bad();
}

objref refer_to_signal1(objref source) {
    auto *const ref = dynamic_cast<cSignalRef1 *>(source.get());
    return ref && ref->signal_ptr() ? objref(make<cSignalRef1>(*ref)) : cat::bad();
}

objref refer_to_siginfo(objref source) {
    auto *const ref = dynamic_cast<cObjDR<cSigInfo> *>(source.get());
    return ref && ref->valptr() ? objref(make<cObjDR<cSigInfo>>(ref->val())) : cat::bad();
}

void setup_signal(cTypeObj &type) {
    type.setflags(tf_exe | tf_free_exe);
    set_makers(type, new_signal, refer_to_signal);
}

void setup_signal1(cTypeObj &type) {
    type.setflags(tf_exe | tf_free_exe);
    set_makers(type, new_signal1, refer_to_signal1);
}

void setup_siginfo(cTypeObj &type) { set_makers(type, new_siginfo, refer_to_siginfo); }

// Returned for a refused request. Never freed: it may have connections when the process ends.
template <class Signal> Signal &scratch_signal() {
    static constinit Signal *scratch = nullptr;
    if (!scratch) scratch = new Signal;
    scratch->disconnect();
    return *scratch;
}

} // namespace

namespace cat {

cTypeObj &type_signal() { return type_of(signal_type, "cSignal", setup_signal); }
cTypeObj &type_signal1() { return type_of(signal1_type, "cSignal1", setup_signal1); }
cTypeObj &type_slot1() { return type_of(slot1_type, "objslot1", nullptr); }
cTypeObj &type_slot2() { return type_of(slot2_type, "objslot2", nullptr); }

bool is_signal_type(cObj const *type) {
    for (typeref const *held : held_types)
        if (held && held->get() == type) return true;
    return false;
}

bool drop_signal_types() {
    bool any = false;
    for (typeref *&held : held_types) {
        if (!held) continue;
        std::unique_ptr<typeref> const type(std::exchange(held, nullptr));
        objref const registered = core.type_hash->getitem((*type)->name());
        if (registered == *type) core.type_hash->delitem((*type)->name());
        any = true;
    } // RE-ENTERS
    return any;
}

} // namespace cat

cTypeObj &cTypeOf(cSigInfo *) { return type_of(siginfo_type, "cSigInfo", setup_siginfo); }

// --- signals

cSignalRef::cSignalRef() : cExeObj(0, false, false, &cat::type_signal()) {}
cSignalRef::cSignalRef(cSignal &signal) : cSignalRef() { sig_ = &signal; }
cSignalRef::~cSignalRef() = default;

cSignal &cSignalRef::force(cAttr &attr) {
    objref const value = attr.force_type(cat::type_signal());
    auto const *const ref = dynamic_cast<cSignalRef const *>(value.get());
    return ref && ref->sig_ ? *ref->sig_ : scratch_signal<cSignal>();
}

objref cSignalRef::oexecute() const {
    if (sig_) (*sig_)(); // RE-ENTERS: may destroy *this
    return cat::nil();
}

cSignalObj::cSignalObj() { set_signal(&own_); }
cSignalObj::~cSignalObj() { own_.disconnect(); }

cSignalRef1::cSignalRef1(bool s) : cExeObj(1, s, true, &cat::type_signal1()) {}
cSignalRef1::cSignalRef1(cSignal1<cObj &> &signal, bool s) : cSignalRef1(s) { sig_ = &signal; }
cSignalRef1::cSignalRef1(cSignalRef1 &other) : cSignalRef1(other.s()) { sig_ = other.sig_; }
cSignalRef1::~cSignalRef1() = default;

cSignal1<cObj &> &cSignalRef1::force(cAttr &attr) {
    objref const value = attr.force_type(cat::type_signal1());
    auto const *const ref = dynamic_cast<cSignalRef1 const *>(value.get());
    return ref && ref->sig_ ? *ref->sig_ : scratch_signal<cSignal1<cObj &>>();
}

bool cSignalRef1::pexecute(cObj &arg) const {
    if (sig_) (*sig_)(arg); // RE-ENTERS: may destroy *this
    return true;
}

cSignalObj1::cSignalObj1(bool s) : cSignalRef1(s) { set_signal(&own_); }
cSignalObj1::~cSignalObj1() { own_.disconnect(); }

// --- slots

cObjSlot::cObjSlot(cObj &target, cProcedure1 fn)
    : cObj(&cat::type_slot1()), cSlot<cObjSlot>(this, &cObjSlot::do_slot), fn_(fn),
      target_(&target) {}

cObjSlot::cObjSlot(cObj &target, cProcedure1 fn, cSignal const &signal) : cObjSlot(target, fn) {
    signal.connect(*this);
}

cObjSlot::~cObjSlot() { disconnect(); }

void cObjSlot::do_slot() {
    if (fn_) fn_(*target_); // RE-ENTERS: may destroy *this
}

cObjSlot1::cObjSlot1(cObj &target, cProcedure2 fn)
    : cObj(&cat::type_slot2()), cSlot1<cObjSlot1, cObj &>(this, &cObjSlot1::do_slot), fn_(fn),
      target_(&target) {}

cObjSlot1::cObjSlot1(cObj &target, cProcedure2 fn, cSignal1<cObj &> const &signal)
    : cObjSlot1(target, fn) {
    signal.connect(*this);
}

cObjSlot1::~cObjSlot1() { disconnect(); }

void cObjSlot1::do_slot(cObj &arg) {
    if (!fn_) return;
    objref ref = objref::share(&arg);
    fn_(*target_, ref); // RE-ENTERS: may destroy *this
}

// --- what every object has

cSignal *cObj::changed_signal() const {
    if (!ommap_ || !held_types[signal_type]) return nullptr;
    hashref const hash = ommap_;
    cAttrNode const *const node = hash->find(std::string("changed")); // RUNS USER CODE: keys
    if (!node || hash != ommap_ || is_void(node->valref())) return nullptr;
    if (&node->valref()->type() != held_types[signal_type]->get()) return nullptr;
    auto const *const ref = dynamic_cast<cSignalRef const *>(node->valref().get());
    return ref ? ref->signal_ptr() : nullptr;
}

cSignal &cObj::force_changed_signal() {
    if (cSignal *const signal = changed_signal()) return *signal;
    set_omember("changed", make<cSignalObj>()); // RE-ENTERS: the old member is destroyed
    cSignal *const signal = changed_signal();
    return signal ? *signal : scratch_signal<cSignal>();
}

template class cSlot<cObjSlot>;
template class cSlot1<cObjSlot1, cObj &>;
template class cObjDR<cSigInfo>;
template class cObjD<cSigInfo>;

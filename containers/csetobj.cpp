// Set objects and the standard methods of type "set". The index of the hash finds equal values; the
// new value is on the left side of each comparison.

#include "qrv/containers/csetobj.h"

#include "containers/as_map.h"
#include "containers/ccompare.h"
#include "containers/cmergebudget.h"
#include "containers/cringwalk.h"
#include "containers/csetup.h"
#include "containers/value_index.h"
#include "core/cset_index.h"
#include "qrv/containers/citerobj.h"
#include "qrv/containers/cvectorobj.h"
#include "qrv/core/ctypes.h"

cSetObj::cSetObj() : cMapObj(&cat::type_set(), false) {}

cSetObj::cSetObj(cSetObj const &other) : cSetObj() {
    create();
    assign(other);
    flags(other.flags());
}

cSetObj::cSetObj(cObj const &other) : cSetObj() {
    assign(other);
    flags(other.flags());
}

cSetObj::~cSetObj() = default;

cSetObj &cSetObj::operator=(cSetObj const &other) = default;

cSetObj &cSetObj::operator=(cObj const &other) {
    assign(other);
    return *this;
}

namespace {

// Whether the holder has an equal value for each of the values. Null equals only null.
bool holds_all(cMapObj const &holder, cMapObj const &values) {
    hashref const hash = holder.datamap_ref();
    hashref const walked = values.datamap_ref();
    cValueIndex index(*hash);
    for (cRingWalk walk(*walked); walk.valid(); walk.step()) {
        objref const value = walk.valref();
        if (value ? !index.find(*value) : !hash->findvalref(value)) return false;
    }
    return true;
}

bool equal_sets(cMapObj const &a, cMapObj const &b) { return holds_all(b, a) && holds_all(a, b); }

} // namespace

bool cTomSet::setattr(cObj &obj, objref &key, objref &value) {
    cMapObj *const map = cat::as_map(&obj);
    if (!map) return false;
    objref const self = objref::share(&obj); // since comparing values may run user code
    if (!cObj::is_kill(value) && cSetIndex::holds(map->datamap(), value)) return true;
    return cTomVector::setattr(obj, key, value);
}

objref cTomSet::getattr(objref obj, objref key) { return cTomVector::getattr(obj, key); }

bool cTomSet::m_append(cObj &obj, objref &arg) {
    cMapObj *const map = cat::as_map(&obj);
    if (!map) return false;
    hashref const hash = map->datamap_ref(); // since comparing values may run user code
    if (arg && cSetIndex::holds(*hash, arg)) return false;
    hash->vect_append(arg);
    return true;
}

// A set that is assigned to itself becomes empty: its hash is cleared before it is walked.
bool cTomSet::m_assign(cObj &obj, objref &arg) {
    cMapObj *const map = cat::as_map(&obj);
    if (!map || !arg) return false;
    objref const self = objref::share(&obj); // a removed value may own this set
    hashref const hash = map->datamap_ref();
    hash->clear();
    for (cIterObj it = arg->begin(); it.valid(); ++it) {
        objref const value = it.valref();
        if (cat::merge_allows(obj, nullptr, value)) obj.append(value);
        if (cat::merge_exhausted()) return false;
    }
    return true;
}

bool cTomSet::m_add(cObj &obj, objref &arg) { return cTomVector::m_add(obj, arg); }

bool cTomSet::m_equal(cObj &obj, objref &arg) {
    cMapObj *const map = cat::as_map(&obj);
    cMapObj *const other = map ? cat::comparable(*map, arg) : nullptr;
    return other && cat::compared(cat::cCompareKind::set, *map, *other, equal_sets);
}

namespace {
objref new_set(objref) { return make<cSetObj>(); }
} // namespace

void cat::setup_set(cTypeObj &type) {
    setup_container(type,
                    {new_set, cTomSet::m_assign, cTomSet::m_add, cTomSet::setattr, cTomSet::getattr,
                     text_hooks.set, cTomSet::m_equal, cTomSet::m_append},
                    "sc");
}

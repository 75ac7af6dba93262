// Vector objects and the standard methods of type "vector": the rules of indices on top of the
// vector operations of the hash. The set's setattr shares all of these rules but one.

#include "qrv/containers/cvectorobj.h"

#include "containers/as_map.h"
#include "containers/ccompare.h"
#include "containers/cringwalk.h"
#include "containers/csetup.h"
#include "core/cerr_object.h"
#include "qrv/containers/citerobj.h"
#include "qrv/core/cobjd.h"
#include "qrv/core/ctypes.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <ostream>

cVectorObj::cVectorObj() : cMapObj(&cat::type_vector(), false) {}

cVectorObj::cVectorObj(cVectorObj const &other) : cVectorObj() {
    create();
    assign(other);
    flags(other.flags());
}

cVectorObj::cVectorObj(cObj const &other) : cVectorObj() {
    assign(other);
    flags(other.flags());
}

cVectorObj::~cVectorObj() = default;

cVectorObj &cVectorObj::operator=(cVectorObj const &other) = default;

cVectorObj &cVectorObj::operator=(cObj const &other) {
    assign(other);
    return *this;
}

bool cVectorObj::insert(int place, objref const &value) {
    return datamap().vect_insert(place, value);
}

namespace {

// The indices for start and count. `first` is at least 0. `end` is at most the size and is computed
// from the given start, so a negative start shortens the range.
struct cRange {
    std::int64_t first;
    std::int64_t end;
};

cRange range_of(int start, int count, int size) {
    return {std::max(start, 0), std::min<std::int64_t>(std::int64_t{start} + count, size)};
}

bool report_key(cErrText const &error, cObj const &obj, objref const &key) {
    begin_error(error, obj, key);
    return raise_eros();
}

bool report_const_keys(cObj const &obj, objref const &key) {
    return report_key(err_const_keys, obj, key);
}

} // namespace

bool cVectorObj::erase(int start, int count) {
    if (count == 0) return true;
    hashref const hash = datamap_ref(); // an erased value may own this vector
    auto const [first, end] = range_of(start, count, size());
    for (std::int64_t i = end - 1; i >= first; --i) hash->vect_erase(static_cast<int>(i));
    return true;
}

bool cVectorObj::setslice(cObj const &source, int start, int count) {
    objref const self = objref::share(this); // a replaced value may own this vector
    auto const [first, end] = range_of(start, count, size());
    if (first > end) return false;
    objref const slice =
        const_cast<cObj &>(source).getslice(0, std::numeric_limits<int>::max(), entrytype());
    cMapObj *const values = cat::as_map(slice);
    if (!is_good(slice) || !values) return false;
    // DELIBERATE: the count is the end of the range, not its length.
    //   Pinned: setslice_from_a_later_start_erases_as_many_values_as_its_end_is
    if (end != 0) erase(static_cast<int>(first), static_cast<int>(end));
    int place = static_cast<int>(first);
    for (cRingWalk walk(values->datamap()); walk.valid(); walk.step())
        insert(place++, walk.valref());
    return true;
}

bool cTomVector::setattr(cObj &obj, objref &key, objref &value) {
    cMapObj *const map = cat::as_map(&obj);
    if (!map || cat::refuses_type(*map, value)) return false;
    int const i = cat::as_index(key);
    if (i == cat::no_index) return report_key(err_key_not_int, obj, key);
    hashref const hash = map->datamap_ref();
    bool const const_keys = obj.flags_of(of_const_keys) != 0;
    if (cObj::is_kill(value)) return const_keys ? report_const_keys(obj, key) : hash->vect_erase(i);
    int const n = map->size();
    if (i < 0 || i > n) return report_key(err_key_out_of_range, obj, key);
    if (i < n) return hash->setitem(key, value);
    return const_keys ? report_const_keys(obj, key) : hash->vect_append(value);
}

objref cTomVector::getattr(objref obj, objref key) {
    cMapObj *const map = cat::as_map(obj);
    return map ? map->datamap().getitem(key) : cat::bad();
}

bool cTomVector::m_assign(cObj &obj, objref &arg) { return arg && obj.attrcopy(*arg, "0ax"); }

bool cTomVector::m_add(cObj &obj, objref &arg) {
    if (!arg || !arg->is_container()) return true;
    objref const self = objref::share(&obj);
    objref const copy = arg->clone(false); // so that v += v terminates
    for (cIterObj it = copy->begin(); it.valid(); ++it) {
        objref const value = it.valref();
        obj.append(value);
    }
    return true;
}

bool cTomVector::m_equal(cObj &obj, objref &arg) {
    cMapObj *const map = cat::as_map(&obj);
    cMapObj *const other = map ? cat::comparable(*map, arg) : nullptr;
    return other &&
           cat::compared(cat::cCompareKind::vector, *map, *other, cat::equal_values_in_order);
}

namespace {
objref new_vector(objref) { return make<cVectorObj>(); }
} // namespace

void cat::setup_vector(cTypeObj &type) {
    setup_container(type,
                    {new_vector, cTomVector::m_assign, cTomVector::m_add, cTomVector::setattr,
                     cTomVector::getattr, text_hooks.vector, cTomVector::m_equal,
                     cTomMap::m_append},
                    "sc");
}

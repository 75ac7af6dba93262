// A direct copy is permitted only after these conditions are checked: the methods of the type that
// copying would call, and the flags and settings of the containers that these methods would read.

#include "containers/cplain_copy.h"

#include "containers/as_map.h"
#include "containers/cmergebudget.h"
#include "containers/csetup.h"
#include "containers/value_index.h"
#include "core/cattrhash_insert.h"
#include "core/cbuiltin.h"
#include "core/cfresh.h"
#include "core/cscalar.h"
#include "qrv/containers/cattspec.h"
#include "qrv/containers/csetobj.h"
#include "qrv/core/cexe.h"

namespace {

bool appends_by(cTypeObj const &type, cProcedure2 method) {
    objref const member = type.tmember("append");
    auto const *const exe = dynamic_cast<cExeFunction const *>(member.get());
    return exe && exe->function() == reinterpret_cast<cVoidFunction>(method);
}

// Copies fill a map by setattr and a vector by append.
bool is_plain_map(cObj const &source) {
    constexpr unsigned methods =
        cat::method_bits(mid_assign, mid_setattr, mid_getattr, mid_iterobj);
    return cObj::is_map(&source) && cat::is_builtin(source, methods) && !source.flags_of(asf_all);
}

bool is_plain_vector(cObj const &source) {
    constexpr unsigned methods = cat::method_bits(mid_assign, mid_getattr, mid_iterobj);
    return cObj::is_vector(&source) && cat::is_builtin(source, methods) &&
           cat::as_map(&source)->datamap().is_vector() &&
           appends_by(source.type(), &cTomMap::m_append);
}

bool is_plain_target(cMapObj const &target) {
    if (!target.datamap().empty() || target.flags_of(of_exe_member)) return false;
    if (cObj::is_vector(&target)) return !target.has_ommap();
    return !target.flags_of(int{asf_all} | int{of_const_keys}) && !target.entrytype();
}

// For a value whose type's `create` does nothing.
template <class T> objref clone_of(cObj const &value) {
    T const *const known = cat::value_in<T>(&value);
    return known ? objref(make<cObjD<T>>(*known, &value.type())) : objref();
}

} // namespace

bool cat::copies_plainly(cObj const &source) {
    return !cMergeBudget::current() && (is_plain_map(source) || is_plain_vector(source)) &&
           cAttrInsert::is_copyable(as_map(&source)->datamap());
}

bool cat::is_plain_set(cObj const &set) {
    constexpr unsigned methods = method_bits(mid_assign, mid_iterobj);
    if (cMergeBudget::current() || !cObj::is_set(&set) || !is_builtin(set, methods) ||
        !appends_by(set.type(), &cTomSet::m_append))
        return false;
    cAttrHash const &hash = as_map(&set)->datamap();
    for (cAttrNode const *node = hash.first(); node; node = hash.next(node))
        if (!node->valref() || !cat::is_plain(*node->valref())) return false;
    return true;
}

bool cat::copy_plainly(cObj &target, cObj const &source) {
    cMapObj *const map = &target.type() == &source.type() ? as_map(&target) : nullptr;
    if (!map || !is_plain_target(*map) || !copies_plainly(source)) return false;
    cAttrHash const &from = as_map(&source)->datamap();
    constexpr unsigned attrcopy_holders = 1;
    bool const may_be_below =
        cObj::is_map(&target) && !cFresh::is_held_by(target, attrcopy_holders);
    if (may_be_below && !is_plainly_apart(from, target)) return false;
    hashref const to = map->datamap_ref();
    cAttrInsert::copy(*to, from);
    return true;
}

objref cat::clone_plainly(cObj const &value) {
    if (!is_builtin(value, method_bits(mid_newobj, mid_create, mid_assign))) return nullptr;
    switch (value.object_class()) {
    case cObjClass::string:
        return clone_of<std::string>(value);
    case cObjClass::integer:
        return clone_of<int>(value);
    case cObjClass::float_number:
        return clone_of<float>(value);
    case cObjClass::double_number:
        return clone_of<double>(value);
    case cObjClass::boolean:
        return clone_of<bool>(value);
    default:
        return nullptr;
    }
}

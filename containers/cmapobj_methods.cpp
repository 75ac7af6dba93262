// The standard methods of type "map". setattr consists of numbered steps:
//   1 to 3  refuse a value of another type than the entry type, a cycle, and a new key while keys
//           are const
//   4       if the key has no specification, store the value
//   5 to 7  if it has one, apply its rules, which can refuse the value or replace it by another one
// The text of a key is created before the error stream is used, since creating it may itself raise
// an error.

#include "containers/as_map.h"
#include "containers/ccompare.h"
#include "containers/cringwalk.h"
#include "containers/csetup.h"
#include "core/cerr_object.h"
#include "qrv/containers/cattr.h"
#include "qrv/containers/cattspec.h"
#include "qrv/containers/citerobj.h"
#include "qrv/containers/cmapobj.h"
#include "qrv/core/cexe.h"
#include "qrv/core/cobjd.h"
#include "qrv/diagnostics/ccout.h"

#include <ostream>

namespace {

// Reports an error of a specification: the key, the type's name, and `end`.
bool report_spec(cErrText const &error, cObj const &obj, objref const &key, char const *end,
                 std::string const &found = {}) {
    std::string const text = text_hooks.as_text(key);
    begin_error(error) << cNamed::key(text) << "' in object type '"
                       << cNamed::type(obj.type().name()) << "'" << end
                       << cNamed::found(found).unsaid();
    return raise_eros();
}

bool report_required(cObj const &obj, objref const &key) {
    return report_spec(err_required, obj, key, "  is missed");
}

// 6. Stores what the attspec prescribes if the value is nil or the kill value. False if no rule
// applies.
bool store_instead(cAttspec const &spec, cMapObj &map, objref const &key, bool &result) {
    if (spec.is_implied())
        result = map.datamap().setitem(key, cat::nil());
    else if (spec.is_default())
        result = map.datamap().setitem(key, spec.get_default());
    else if (spec.is_required())
        result = report_required(map, key);
    else
        return false;
    return true;
}

bool set_specified(cAttspec const &spec, cMapObj &map, objref const &key, objref const &value) {
    hashref const hash = map.datamap_ref();
    objref const present = hash->getitem(key);
    if (spec.is_fixref() && !cObj::is_void(present)) { // 5
        return present == value || report_spec(err_fixed_ref, map, key, "");
    }
    bool const nothing = cObj::is_kill(value) || cObj::is_nil(value);
    if (bool result = false; nothing && store_instead(spec, map, key, result)) return result; // 6
    if (value && spec.is_fixtype() && &value->type() != spec.get_type())                      // 7
        return report_spec(err_fixed_type, map, key, "", value->type().name());
    return hash->mapitem(key, value);
}

// What getattr returns for a specified attribute that is absent or void.
objref missing_value(cAttspec const &spec, cObj const &obj, objref const &key,
                     objref const &present) {
    if (spec.is_required()) return report_required(obj, key) ? cat::badfind() : cat::bad();
    if (spec.is_implied()) return cat::nil();
    if (spec.is_default()) return spec.get_default();
    return present;
}

} // namespace

bool cat::refuses_type(cMapObj const &map, objref const &value) noexcept {
    return map.entrytype() && !cObj::is_kill(value) && &value->type() != map.entrytype();
}

bool cTomMap::setattr(cObj &obj, objref &key, objref &value) {
    cMapObj *const map = cat::as_map(&obj);
    if (!map || cat::refuses_type(*map, value)) return false; // 1
    if (value && value->is_owner_of(obj)) {                   // 2
        begin_error(err_cycle, obj, key);
        return raise_eros();
    }
    hashref const hash = map->datamap_ref();
    if (obj.flags_of(of_const_keys) && !hash->find(key)) { // 3
        begin_error(err_const_keys, obj, key);
        return raise_eros();
    }
    specref const spec = map->attspec(key);
    if (spec == cAttspec::nilspec()) return hash->mapitem(key, value); // 4
    return set_specified(*spec, *map, key, value);
}

objref cTomMap::getattr(objref obj, objref key) {
    cMapObj *const map = cat::as_map(obj);
    if (!map) return cat::bad();
    objref const value = map->datamap().getitem(key);
    if (!cObj::is_void(value)) return value;
    specref const spec = map->attspec(key);
    return spec == cAttspec::nilspec() ? value : missing_value(*spec, *map, key, value);
}

objref cTomMap::getattr_insert(objref obj, objref key) {
    cMapObj *const map = cat::as_map(obj);
    if (!map) return cat::bad();
    objref const value = map->datamap().getitem(key);
    if (cObj::is_good(value)) return value;
    objref const made = make<cMapObj>();
    return map->datamap().mapitem(key, made) ? made : cat::bad();
}

objref cTomMap::iterobj(objref obj) {
    cMapObj *const map = cat::as_map(obj);
    return map ? objref(make<cIterObj>(map->datamap_ref())) : cat::bad();
}

bool cTomMap::m_assign(cObj &obj, objref &arg) { return arg && obj.attrcopy(*arg, "0as"); }

bool cTomMap::m_add(cObj &obj, objref &arg) {
    cMapObj *const map = cat::as_map(&obj);
    if (!map || !arg || !arg->is_container()) return true;
    objref const copy = arg->clone(false); // since arg may be the map itself
    objref const self = objref::share(&obj);
    for (cIterObj it = copy->begin(); it.valid(); ++it) {
        objref const key = it.key();
        objref const value = it.valref();
        if (!map->datamap().find(key)) cAttr(self, key) = value;
    }
    return true;
}

bool cTomMap::m_append(cObj &obj, objref &arg) {
    if (cMapObj *const map = cat::as_map(&obj)) map->datamap().vect_append(arg);
    return true;
}

namespace {

// Does b have every key of a, with an equal value?
bool equal_by_key(cMapObj const &a, cMapObj const &b) {
    hashref const keep = a.datamap_ref();
    hashref const others = b.datamap_ref();
    for (cRingWalk walk(*keep); walk.valid(); walk.step()) {
        cAttrNode const *const other = others->find(walk.key());
        if (!other || !cat::same_value(walk.valref(), other->valref())) return false;
    }
    return true;
}

template <bool with_keys> bool equal_in_order(cMapObj const &a, cMapObj const &b) {
    hashref const first = a.datamap_ref();
    hashref const second = b.datamap_ref();
    cRingWalk x(*first);
    cRingWalk y(*second);
    for (; x.valid() && y.valid(); x.step(), y.step()) {
        if (with_keys && !cat::same_key(x.key(), y.key())) return false;
        if (!cat::same_value(x.valref(), y.valref())) return false;
    }
    return (!x.valid() && !y.valid()) || cat::report_sizes(a, b);
}

} // namespace

bool cat::report_sizes(cMapObj const &a, cMapObj const &b) {
    std::ostream &os = std_out();
    os << "cAttrHash::size klappt nicht:" << a.size() << " !=  " << b.size() << std::endl;
    text_hooks.writeobj(a, os);
    os << std::endl;
    text_hooks.writeobj(b, os);
    os << std::endl;
    return false;
}

bool cat::equal_values_in_order(cMapObj const &a, cMapObj const &b) {
    return equal_in_order<false>(a, b);
}

bool cTomMap::equal_sorted(cObj &obj, objref &arg) {
    cMapObj *const map = cat::as_map(&obj);
    cMapObj *const other = map ? cat::comparable(*map, arg) : nullptr;
    return other &&
           cat::compared(cat::cCompareKind::map_in_order, *map, *other, equal_in_order<true>);
}

bool cMapObj::equal_unsorted(cObj const &other) const {
    objref const arg = objref::share(const_cast<cObj *>(&other));
    cMapObj *const map = cat::comparable(*this, arg);
    return map && cat::compared(cat::cCompareKind::map_by_key, *this, *map, equal_by_key);
}

bool cTomMap::equal_unsorted(cObj &obj, objref &arg) {
    cMapObj *const map = cat::as_map(&obj);
    return map && arg && map->equal_unsorted(*arg);
}

namespace {

objref size_of(objref obj) {
    cMapObj *const map = cat::as_map(obj);
    return map ? cat::of(map->size()) : cat::bad();
}

bool clear(cObj &obj) {
    if (cMapObj *const map = cat::as_map(&obj)) map->clear();
    return true;
}

objref new_map(objref) { return make<cMapObj>(); }

} // namespace

void cat::setup_container(cTypeObj &type, cContainerMethods const &own, char const *wformat) {
    note_default_iterobj(type);
    type.setflags(tf_container | tf_bare);
    type.set_tmember("newobj", make<cExeMember>(own.newobj));
    type.set_tmember("assign", make<cExeMember>(own.assign));
    type.set_tmember("add", make<cExeMember>(own.add));
    type.set_tmember("setattr", make<cExeMember>(own.setattr));
    type.set_tmember("getattr", make<cExeMember>(own.getattr));
    type.set_tmember("write", make<cExeMember>(own.text.write));
    type.set_tmember("read", make<cExeMember>(own.text.read));
    type.set_tmember("equal", make<cExeMember>(own.equal));
    type.set_tmember("iterobj", make<cExeMember>(&cTomMap::iterobj));
    type.set_tmember("append", make<cExeMember>(own.append));
    type.set_tmember("size", make<cExeMember>(size_of));
    type.set_tmember("clear", make<cExeMember>(clear));
    type.set_tmember("wformat", cat::of(wformat));
    type.set_tmember("cpcommands", cat::of("0as"));
}

void cat::setup_map(cTypeObj &type) {
    setup_container(type,
                    {new_map, cTomMap::m_assign, cTomMap::m_add, cTomMap::setattr, cTomMap::getattr,
                     text_hooks.map, cTomMap::equal_sorted, cTomMap::m_append},
                    "wc");
}

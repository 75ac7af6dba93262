// The global members: methods that every object has, because a call by name searches them last.

#include "containers/cglobals.h"
#include "containers/as_map.h"

#include "core/cscalar.h"
#include "qrv/containers/cmapobj.h"
#include "qrv/core/cattrhash.h"
#include "qrv/core/cexe.h"
#include "qrv/core/cobjd.h"

namespace {

objref type_of(objref obj) { return objref::share(&obj->type()); }

objref iterobj_of(objref obj) { return obj->iterobj(); }

objref ommap_of(objref obj) {
    return obj->has_ommap() ? objref(make<cMapObj>(obj->ommap_ref())) : cat::badfind();
}

// A missing, void or non-numeric count is 1.
objref getslice_of(objref obj, objref start, objref count) {
    int first = 0;
    if (cObj::is_void(start) || !cat::int_of(start, first)) return cat::bad();
    int places = 1;
    if (cObj::is_void(count) || !cat::int_of(count, places)) places = 1;
    return obj->getslice(first, places, nullptr);
}

objref new_by_name(objref name) {
    if (!cat::is_string(name)) return cat::bad();
    objref const type = cat::typemap().getattr(name);
    auto const *const made = dynamic_cast<cTypeObj const *>(type.get()); // a flag could be wrong
    return made && made->is_type() ? made->newobj() : cat::bad();
}

objref flags_word(objref obj) { return cat::of(obj->flags()); }

objref flags_masked(objref obj, objref mask) {
    int bits = 0;
    if (cObj::is_void(mask) || !cat::int_of(mask, bits)) return cat::bad();
    return cat::of(obj->flags_of(bits));
}

cMapObj *container(cObj &obj) { return obj.is_container() ? cat::as_map(&obj) : nullptr; }

objref entrytype_of(objref obj) {
    cMapObj const *const map = container(*obj);
    if (!map) return cat::bad();
    cTypeObj const *const type = map->entrytype();
    return type ? cat::of(type->name()) : cat::badfind();
}

bool set_entrytype(cObj &obj, objref &value) {
    cMapObj *const map = container(obj);
    if (!map) return false;
    if (cObj::is_kill(value)) {
        map->set_entrytype(nullptr);
        return true;
    }
    objref const found = cat::type_of_key(value);
    auto *const type = dynamic_cast<cTypeObj *>(found.get());
    if (type) map->set_entrytype(type);
    return type != nullptr;
}

// A void argument sets the flag, a bool sets or clears it.
bool set_flag(cObj &obj, objref const &value, int flag) {
    bool on = true;
    if (!cObj::is_void(value) && !cat::bool_of(value, on)) return false;
    if (on)
        obj.setflags(flag);
    else
        obj.unsetflags(flag);
    return true;
}

bool set_const_flag(cObj &obj, objref &value) { return set_flag(obj, value, of_const); }

bool set_const_keys(cObj &obj, objref &value) {
    return obj.is_container() && set_flag(obj, value, of_const_keys);
}

} // namespace

namespace cat {

void fill_gmmap(cAttrHash &members) {
    members.mapitem("type", make<cExeMember>(type_of));
    members.mapitem("iterobj", make<cExeMember>(iterobj_of));
    members.mapitem("ommap", make<cExeMember>(ommap_of));
    members.mapitem("getslice", make<cExeMember>(getslice_of));
    members.mapitem("new", make<cExeGlobal>(new_by_name));
    members.mapitem("wformat", of("wc"));
    members.mapitem("cpcommands", of("-a-"));
    members.mapitem("flags", make<cExeMember>(flags_word));
    members.mapitem("flags_of", make<cExeMember>(flags_masked));
    members.mapitem("entrytype", make<cExeMember>(entrytype_of));
    members.mapitem("set_const_flag", make<cExeMember>(set_const_flag));
    members.mapitem("set_const_keys", make<cExeMember>(set_const_keys));
    members.mapitem("set_entrytype", make<cExeMember>(set_entrytype));
}

// Uses insert, since mapitem refuses the value bad, and badfind would remove its key.
void fill_constmap(cAttrHash &constants) {
    auto const put = [&constants](char const *name, objref const &value) {
        constants.insert(own_key(std::string(name)), value, nullptr);
    };
    put("nil", nil());
    put("bad", bad());
    put("badfind", badfind());
    put("true", btrue());
    put("false", bfalse());
    for (char const *marker : {"REQUIRED", "IMPLIED", "FIXED"}) put(marker, make<cObj>(true));
}

} // namespace cat

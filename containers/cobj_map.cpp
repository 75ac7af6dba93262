// Operations of an object on maps and vectors: indexing, creating missing levels, and replacing its
// map of members.

#include "qrv/containers/cmapobj.h"

#include "containers/as_map.h"
#include "core/cbuiltin.h"
#include "core/cregistry.h"
#include "qrv/core/cobj.h"
#include "qrv/core/ctypes.h"

#include <utility>

// Finds what the library's getattr of a vector or a set finds, without creating a key object.
objref cObj::operator/(int key) {
    bool const is_plain = cat::is_builtin(*this, cat::method_bit(mid_getattr)) &&
                          (type_ == core.vector || type_ == core.set) &&
                          cat::is_builtin(*core.integer, cat::method_bit(mid_create));
    if (!is_plain || cat::as_map(this)->datamap().has_foreign_keys()) return getattr(own_key(key));
    cAttrHash const &hash = cat::as_map(this)->datamap();
    if (cObj *const value = hash.valueof(key)) return objref::share(value);
    cAttrNode const *const node = hash.find(key);
    return node ? node->valref() : cat::badfind();
}

objref cObj::getattr_force(objref const &key, bool force) {
    objref value = getattr(key);
    if (!force || !value || value != cat::badfind()) return value;
    if (is_void()) return cat::bad();
    objref level = make<cMapObj>();
    return setattr(key, level) ? level : cat::bad();
}

void cObj::ommap(cMapObj const &map) {
    objref self = objref::share(this); // the old map may hold the last owner of this object
    if (map.datamap_ref() != ommap_) leave_ommap();
    hashref old = std::exchange(ommap_, map.datamap_ref());
    old = nullptr;                 // RE-ENTERS
    if (self->refs() == 1) return; // only `self` is left, so the object is destroyed now
    self = nullptr;
    changed(); // RE-ENTERS: fires the signal of the new map
}

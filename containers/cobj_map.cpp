// What an object does with maps and vectors: indexing, levels made on the way, and a map laid over
// its members.

#include "qrv/containers/cmapobj.h"

#include "containers/ccompare.h"
#include "core/cbuiltin.h"
#include "core/cregistry.h"
#include "qrv/core/cobj.h"
#include "qrv/core/ctypes.h"

#include <utility>

// What the library's getattr of a vector or a set finds, without a key object that nobody would
// see.
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
    objref self = objref::share(this); // the old map may hold its last owner
    if (map.datamap_ref() != ommap_) leave_ommap();
    hashref old = std::exchange(ommap_, map.datamap_ref());
    old = nullptr;                 // RE-ENTERS
    if (self->refs() == 1) return; // and it goes now
    self = nullptr;
    changed(); // RE-ENTERS: fires what stands in the new map
}

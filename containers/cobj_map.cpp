// What an object does with maps: levels made on the way, and a map laid over its members.

#include "qrv/containers/cmapobj.h"
#include "qrv/core/cobj.h"
#include "qrv/core/ctypes.h"

#include <utility>

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

// What an object does with maps: levels made on the way, and a map laid over its members.

#include "qrv/containers/cmapobj.h"
#include "qrv/core/cobj.h"
#include "qrv/core/ctypes.h"

objref cObj::getattr_force(objref const &key, bool force) {
    objref value = getattr(key);
    if (!force || !value || value != cat::badfind()) return value;
    if (is_void()) return cat::bad();
    objref level = make<cMapObj>();
    return setattr(key, level) ? level : cat::bad();
}

void cObj::ommap(cMapObj const &map) {
    hashref const old = ommap_;
    hashref const hash = map.datamap_ref();
    if (hash != old) leave_ommap();
    ommap_ = hash;
    changed(); // RE-ENTERS: fires what stands in the new map
} //              RE-ENTERS: old

#include "qrv/containers/citems.h"

#include "containers/as_map.h"
#include "containers/csetup.h"
#include "qrv/containers/citerobj.h"
#include "qrv/containers/cmapobj.h"
#include "qrv/core/ctypeobj.h"

// Walks a container of the library without an iterator object.
cat::Items cat::items(objref const &ref) {
    if (cObj::is_void(ref) || !may_hold_values(*ref)) return {};
    auto const plain = reinterpret_cast<cVoidFunction>(&cTomMap::iterobj);
    cMapObj const *const map = as_map(ref.get());
    if (map && !ref->flags_of(of_exe_member) && ref->type().method(mid_iterobj) == plain)
        return Items(map->datamap_ref());
    objref const keep = ref;
    return Items(keep->begin().hash_ref()); // RUNS USER CODE
}

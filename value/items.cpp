#include "qrv/value/items.h"

#include "value/place.h"

namespace qrv::detail {

cursor::cursor(value const &container) {
    objref const &object = value_access::object(container);
    if (!object) return;
    cMapObj const *const map = cat::as_map(object);
    if (!map) throw type_error({}, "a container", description(container));
    at_ = cAttrCursor(map->datamap_ref());
}

value cursor::key() const {
    cAttrNode const *const node = at_.node();
    return node ? value_of(node->key()) : value();
}

value cursor::element() const {
    cAttrNode const *const node = at_.node();
    return node ? value_of(node->valref()) : value();
}

} // namespace qrv::detail

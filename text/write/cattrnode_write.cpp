// A single attribute, by its node, by a handle or by a cursor: the key as text, the attribute as
// "key=value; ", and a listing of all.

#include "qrv/containers/cattr.h"
#include "qrv/containers/citerobj.h"
#include "qrv/containers/cmapobj.h"
#include "qrv/core/cattrhash.h"
#include "qrv/core/ctypes.h"
#include "qrv/diagnostics/ccout.h"
#include "qrv/text/write/cwriter.h"

#include <ostream>

std::string cAttrNode::key_as_string() const { return cat::as_string(key()); }

std::string cAttrNode::key_as_string(cAttrNode const *node) { return cat::as_string(key(node)); }

std::string cAttr::key_as_string() const { return cat::as_string(key_); }

std::string cIterObj::key_as_string() const { return cat::as_string(key()); }

namespace {

bool put_value(std::ostream &os, cObj const &value) {
    value.writeobj(os); // RUNS USER CODE
    os << "; ";
    return os.good();
}

void put_header(std::ostream &os, cObj const &obj) {
    auto const *const map = dynamic_cast<cMapObj const *>(&obj);
    if (map && (map->is_map() || map->is_vector())) {
        os << (map->is_map() ? "cMapObj" : "cVectorObj") << ",  size =" << map->size();
        return;
    }
    os << "cObj of type = " << obj.type().name();
    if (obj.has_ommap())
        os << "  ommap-size =" << obj.ommap().used();
    else
        os << "  has void iterator";
}

} // namespace

// The key first: writing it may replace the value.

bool cAttrNode::write(std::ostream &os) const {
    os << key_as_string() << '=';
    return put_value(os, value());
}

bool cAttrNode::write(cAttrNode const *node, std::ostream &os) {
    if (node) return node->write(os);
    os << '=';
    return put_value(os, *cat::bad());
}

bool cAttr::write_attr(std::ostream &os) const {
    os << key_as_string() << '=';
    return put_value(os, **this);
}

void cTomIterator::dump(cObj const &obj) {
    std::ostream &os = cat::std_out();
    put_header(os, obj);
    os << '\n';
    for (cIterObj it = obj.begin(); it.valid(); ++it) {
        os << it.key_as_string() << "  ptr=" << static_cast<void const *>(&it.value()) << "  ";
        it.value().writeobj(os);
        os << '\n';
    }
}

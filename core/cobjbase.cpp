// The census.

#include "qrv/core/cobjbase.h"

#include "core/cregistry.h"
#include "qrv/containers/cattrhash.h"

#include <ostream>

constinit std::uint32_t cObjBase::ob_lstid_ = 0;
constinit std::uint32_t cObjBase::ob_count_ = 0;
constinit std::uint32_t cObjBase::an_lstid = 0;

cObjBase::~cObjBase() = default;

void cObjBase::put_count(std::ostream &os) {
    unsigned int types = 0;
    unsigned int others = 0;
    cat::nil(); // starts the core
    cAttrHash const &hash = *core.type_hash;
    for (cAttrNode const *node = hash.first(); node; node = hash.next(node)) {
        cObj const *const value = node->valref();
        ++(value && value->is_type() ? types : others);
    }
    os << "------------------------------------------------------------------\n"
       << "static daten: \n"
       << "ob_lstid  " << ob_lstid_ << "    ob_count  " << ob_count_ << "   in typemap:" << types
       << "  (No type entries: " << others << " )" << std::endl;
}

// The census.

#include "qrv/core/cobjbase.h"

#include "core/cregistry.h"
#include "qrv/core/cattrhash.h"

#include <ostream>
#include <string>

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
    auto const text = [](std::uint32_t n) { return std::to_string(n); }; // decimal on any stream
    os << "------------------------------------------------------------------\n"
       << "static daten: \n"
       << "ob_lstid  " << text(ob_lstid_) << "    ob_count  " << text(ob_count_)
       << "   in typemap:" << text(types) << "  (No type entries: " << text(others) << " )"
       << std::endl;
}

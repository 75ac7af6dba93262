// The census.

#include "qrv/core/cobjbase.h"

#include "qrv/containers/cmapobj.h"
#include "qrv/core/ctypes.h"

#include <ostream>

constinit std::uint32_t cObjBase::ob_lstid_ = 0;
constinit std::uint32_t cObjBase::ob_count_ = 0;
constinit std::uint32_t cObjBase::an_lstid = 0;

cObjBase::~cObjBase() = default;

void cObjBase::put_count(std::ostream &os) {
    unsigned int types = 0;
    unsigned int others = 0;
    cAttrHash const &hash = cat::typemap().datamap();
    for (cAttrNode const *node = hash.first(); node; node = hash.next(node)) {
        cObj const *const value = node->valref();
        ++(value && value->is_type() ? types : others);
    }
    os << "------------------------------------------------------------------\n"
       << "static daten: \n"
       << "ob_lstid  " << ob_lstid_ << "    ob_count  " << ob_count_ << "   in typemap:" << types
       << "  (No type entries: " << others << " )" << std::endl;
}

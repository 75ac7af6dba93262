// Cursors over any object: begin() calls the object's iterobj; end() is the position after the last
// entry.

#include "qrv/containers/citerobj.h"
#include "qrv/core/cobj.h"

cIterObj cObj::begin() {
    objref const iterator = iterobj();
    auto const *const it = dynamic_cast<cIterObj const *>(iterator.get());
    return it ? cIterObj(*it) : cIterObj();
}

cIterObj cObj::end() {
    cIterObj it = begin();
    it.setpos(-1);
    return it;
}

cIterObj cObj::begin() const { return const_cast<cObj *>(this)->begin(); }

cIterObj cObj::end() const { return const_cast<cObj *>(this)->end(); }

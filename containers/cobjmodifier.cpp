// The scoped replacement of an attribute.

#include "qrv/containers/cobjmodifier.h"

cObjModifier::cObjModifier(cAttr &attr, objref const &value)
    : attr_(attr), previous_(attr.swap_to(value)) {}

cObjModifier::~cObjModifier() {
    try {
        if (!cObj::is_void(attr_.owner())) attr_.owner()->setattr(attr_.key(), previous_);
    } catch (...) { // the error of a refused value has been reported
    }
}

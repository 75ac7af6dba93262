// The standard methods of the type "iterator".

#include "containers/csetup.h"
#include "core/cerr_object.h"
#include "core/cscalar.h"
#include "qrv/containers/citerobj.h"
#include "qrv/core/cexe.h"
#include "qrv/core/cobjd.h"

#include <ostream>

namespace {

// Methods can be called by name on any object, and any object can claim the type; null for others.
cIterObj *iterator_of(cObj *obj) { return dynamic_cast<cIterObj *>(obj); }

objref newobj(objref) { return make<cIterObj>(); }

bool equal(cObj &obj, objref &other) {
    cIterObj const *const it = iterator_of(&obj);
    cIterObj const *const arg = iterator_of(other);
    return it && arg && *it == *arg;
}

objref size(objref obj) {
    cIterObj const *const it = iterator_of(obj);
    return it ? cat::of(it->size()) : cat::bad();
}

} // namespace

objref cTomIterator::getattr(objref obj, objref key) {
    cIterObj const *const it = iterator_of(obj);
    if (!it || !cat::is_string(key)) return cat::bad();
    if (cat::is_equal(key, "key")) return it->key();
    if (cat::is_equal(key, "value")) return it->valref();
    if (cat::is_equal(key, "pos")) return cat::of(it->pos());
    return cat::bad();
}

bool cTomIterator::setattr(cObj &obj, objref &key, objref &value) {
    cIterObj const *const it = iterator_of(&obj);
    if (!it || !cat::is_string(key) || !cat::is_equal(key, "value") || !it->valid()) return false;
    *it->node() = value; // RE-ENTERS: the old value is destroyed
    return true;
}

bool cTomIterator::m_assign(cObj &obj, objref &arg) {
    cIterObj *const it = iterator_of(&obj);
    if (!it || !arg) return false;
    if (&arg->type() == &cat::type_iterator()) {
        cIterObj const *const from = iterator_of(arg);
        if (from) *it = *from;
        return from != nullptr;
    }
    begin_error(err_assign_other_type)
        << cNamed::found(arg->type().name()) << cNamed::type(obj.type().name()).unsaid();
    return raise_eros();
}

namespace cat {

void setup_iterator(cTypeObj &type) {
    type.set_tmember("newobj", make<cExeMember>(newobj));
    type.set_tmember("assign", make<cExeMember>(cTomIterator::m_assign));
    type.set_tmember("getattr", make<cExeMember>(cTomIterator::getattr));
    type.set_tmember("setattr", make<cExeMember>(cTomIterator::setattr));
    type.set_tmember("equal", make<cExeMember>(equal));
    type.set_tmember("size", make<cExeMember>(size));
}

} // namespace cat

// The classes of executables. Each oexecute() and pexecute() of cExeFunction checks that the stored
// function has the prototype for these arguments, and casts the stored pointer back to it.

#include "qrv/core/cexe.h"

#include "core/cerr_object.h"
#include "core/cregistry.h"

#include <ostream>

cExeObj::cExeObj(unsigned int c, bool s, bool p, cTypeObj *type)
    : cObj(type ? type : &cat::type_exe(), cObjClass::executable), c_(c), s_(s), p_(p) {}

cExeObj::~cExeObj() { end_class(); }
cExeFunction::~cExeFunction() = default;
cExeGlobal::~cExeGlobal() = default;
cExeMember::~cExeMember() = default;

bool cExeObj::bbad() const {
    begin_error(err_bad_prototype) << cNamed::name(name_) << "', called with bad prototype";
    return raise_eros();
}

objref cExeObj::bad() const { return bbad() ? cat::nil() : cat::bad(); }

objref cExeObj::oexecute(objref, objref, objref) const { return bad(); }
objref cExeObj::oexecute(objref, objref) const { return bad(); }
objref cExeObj::oexecute(objref) const { return bad(); }
objref cExeObj::oexecute() const { return bad(); }
bool cExeObj::pexecute(cObj &, objref &, objref &) const { return bbad(); }
bool cExeObj::pexecute(cObj &, objref &) const { return bbad(); }
bool cExeObj::pexecute(cObj &) const { return bbad(); }
bool cExeObj::validate_exe(cObj *) const { return true; }

#define QRV_PROTO(type, c, p)                                                                      \
    cExeFunction::cExeFunction(type f, bool s)                                                     \
        : cExeObj(c, s, p), function_(reinterpret_cast<cVoidFunction>(f)),                         \
          proto_(cExeProto::of_##type) {}
QRV_PROTOTYPES(QRV_PROTO)
#undef QRV_PROTO

void *cExeFunction::fpt() const noexcept { return reinterpret_cast<void *>(function_); }

objref cExeFunction::oexecute(objref a, objref b, objref c) const {
    if (proto_ != cExeProto::of_cFunction3) return bad();
    return reinterpret_cast<cFunction3>(function_)(std::move(a), std::move(b), std::move(c));
}

objref cExeFunction::oexecute(objref a, objref b) const {
    if (proto_ != cExeProto::of_cFunction2) return bad();
    return reinterpret_cast<cFunction2>(function_)(std::move(a), std::move(b));
}

objref cExeFunction::oexecute(objref a) const {
    if (proto_ != cExeProto::of_cFunction1) return bad();
    return reinterpret_cast<cFunction1>(function_)(std::move(a));
}

objref cExeFunction::oexecute() const {
    return proto_ == cExeProto::of_cFunction0 ? reinterpret_cast<cFunction0>(function_)() : bad();
}

bool cExeFunction::pexecute(cObj &a, objref &b, objref &c) const {
    if (proto_ != cExeProto::of_cProcedure3) return bbad();
    return reinterpret_cast<cProcedure3>(function_)(a, b, c);
}

bool cExeFunction::pexecute(cObj &a, objref &b) const {
    if (proto_ != cExeProto::of_cProcedure2) return bbad();
    return reinterpret_cast<cProcedure2>(function_)(a, b);
}

bool cExeFunction::pexecute(cObj &a) const {
    return proto_ == cExeProto::of_cProcedure1 ? reinterpret_cast<cProcedure1>(function_)(a)
                                               : bbad();
}

bool cExeFunction::validate_exe(cObj *owner) const {
    method_id id = mid_count;
    if (!cTypeObj::is_stdmethod(name(), id)) return true;
    return cTypeObj::validate_exe(id, *this, owner ? owner->type().name().c_str() : "");
}

#include "qrv/core/cderivedtype.h"

#include "qrv/core/cexe.h"
#include "qrv/core/cobjd.h"

namespace {

constexpr char const *base_member = "base";

typeref base_of(cTypeObj const &type) {
    objref const base = type.tmember(base_member);
    return typeref::share(dynamic_cast<cTypeObj *>(base.get()));
}

// The base may be a derived type too: each level sets its own type.
objref derived_newobj(objref type) {
    auto &own = static_cast<cTypeObj &>(*type);
    typeref const base = base_of(own);
    if (!base) return cat::bad();
    objref made = base->newobj(); // RUNS USER CODE
    if (cObj::is_good(made)) made->set_type(&own);
    return made;
}

// Guard: gives an object another type until the end of the scope.
class cAsType {
  public:
    cAsType(cObj &obj, cTypeObj &type) : obj_(obj), own_(typeref::share(&obj.type())) {
        obj_.set_type(&type);
    }
    cAsType(cAsType const &) = delete;
    cAsType &operator=(cAsType const &) = delete;
    ~cAsType() { obj_.set_type(own_); }

  private:
    cObj &obj_;
    typeref const own_;
};

// Converts from an object of the base type, with the base's `assign`.
bool convert_from_base(cObj &obj, objref &source) {
    typeref base = base_of(obj.type());
    while (base && base != &source->type()) base = base_of(*base);
    if (!base) return false;
    cAsType const as_base(obj, *base);
    return obj.assign(*source); // RUNS USER CODE
}

} // namespace

bool cat::derive_from(cTypeObj &type, cTypeObj &base) {
    constexpr int inherited = tf_exe | tf_free_exe | tf_container;
    for (typeref at = typeref::share(&base); at; at = base_of(*at))
        if (at == &type) return false;
    type.inherit(base);
    type.inherit_converters(base);
    type.set_converter(base, convert_from_base);
    type.set_hash(base.hash_hook(), base.heq_hook());
    type.setflags(base.flags() & inherited);
    type.set_tmember(base_member, objref::share(&base));
    type.set_tmember("newobj", make<cExeMember>(derived_newobj));
    return true;
}

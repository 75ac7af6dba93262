// Attribute specifications, and the functions of a map that store and find them.

#include "qrv/containers/cattspec.h"

#include "containers/cattspec_nil.h"
#include "qrv/containers/cmapobj.h"
#include "qrv/core/cexe.h"
#include "qrv/core/cobjd.h"
#include "qrv/core/ctypes.h"

#include <utility>

namespace {

constinit specref *the_nilspec = nullptr;

} // namespace

cAttspec::cAttspec(int flags, cTypeObj *type) : cObj(&cat::type_attspec()) {
    this->flags(flags);
    force_flags();
    set_type(type);
    create();
}

cAttspec::cAttspec(objref const &default_value, int flags)
    : cObj(&cat::type_attspec()), default_(default_value) {
    this->flags(flags & (asf_fixtype | asf_fixref));
    if (default_) setflags(asf_default);
    if (default_ && (flags & asf_fixtype)) set_type(&default_->type());
    force_flags();
    create();
}

cAttspec::cAttspec(cNilTag) : cObj(&cat::type_attspec()) {
    obid(0); // created by the library: the census does not count it
}

cAttspec::~cAttspec() = default;

cAttspec &cAttspec::operator=(cAttspec const &other) {
    if (this == &other) return *this;
    assign(other); // reports a missing "assign"; does not copy the flags
    default_ = other.default_;
    type_ = other.type_;
    held_type_ = other.held_type_;
    return *this;
}

void cAttspec::fix_type_flag() {
    if (type_)
        setflags(asf_fixtype);
    else
        unsetflags(asf_fixtype);
}

void cAttspec::force_flags() {
    if (default_) {
        unsetflags(asf_required | asf_implied);
        setflags(asf_default);
    } else if (is_required()) {
        unsetflags(asf_default | asf_implied | asf_fixref);
    } else {
        unsetflags(asf_default | asf_fixref);
        setflags(asf_implied);
    }
    fix_type_flag();
}

void cAttspec::set_flags(int flags) {
    if (flags & asf_implied) unsetflags(asf_required);
    setflags(flags);
    force_flags();
}

void cAttspec::set_default(objref const &value, bool fix_type) {
    if (is_kill(value))
        default_ = nullptr;
    else if (is_void(value))
        return;
    else
        default_ = value;
    if (default_ && fix_type) set_type(&default_->type());
    force_flags();
}

void cAttspec::set_type(cTypeObj *type) {
    typeref old;
    if (type != type_) old = std::exchange(held_type_, nullptr);
    // The scope that declared such a type may end before this object.
    if (type && type->counts_objects()) held_type_ = typeref::share(type);
    type_ = type;
    fix_type_flag();
} // RE-ENTERS: old

void cAttspec::share_type(typeref const &type) {
    typeref const keep = type;
    set_type(keep); // RE-ENTERS
    if (!keep || !is_registered(*keep)) held_type_ = keep;
}

bool cAttspec::is_registered(cTypeObj const &type) {
    cAttrHash const *const known = cat::type_hash_ptr();
    cAttrNode const *const node = known ? known->find(type.name()) : nullptr;
    return node && node->valref() == &type;
}

specref const &cAttspec::nilspec() {
    if (!the_nilspec) {
        the_nilspec = new specref(specref::adopt(new cAttspec(cNilTag{})));
        (*the_nilspec)->obid(0); // the census counts only objects that programs create
    }
    return *the_nilspec;
}

void cat::drop_nilspec() { delete std::exchange(the_nilspec, nullptr); }

specref cMapObj::attspec(objref const &key) {
    if (!flags_of(asf_all)) return cAttspec::nilspec();
    objref const member = omember(key);
    if (!member || &member->type() != &cat::type_attspec()) return cAttspec::nilspec();
    specref const spec = specref::share(dynamic_cast<cAttspec *>(member.get()));
    return spec ? spec : cAttspec::nilspec();
}

specref cMapObj::attspec(std::string const &key) { return attspec(own_key(key)); }

void cMapObj::set_attspec(objref const &key, specref const &spec) {
    if (spec) setflags(spec->flags_of(asf_all)); // not of_const, which would lock the map
    set_omember(key, spec);
    datamap().mapitem(key, cat::nil());
}

void cMapObj::set_attspec(std::string const &key, specref const &spec) {
    set_attspec(own_key(key), spec);
}

// The scoped replacement of a type member, and the base of type factories.

#include "qrv/core/cmodifier.h"

cTypeModifier::cTypeModifier(cTypeObj &type, std::string const &key, objref value)
    : type_(typeref::share(&type)), key_(key), previous_(type.tmember(key)) {
    type.set_tmember(key, std::move(value));
}

cTypeModifier::~cTypeModifier() {
    try {
        if (type_) type_->set_tmember(key_, previous_);
    } catch (...) { // the error of a refused member has been reported
    }
}

cTypeCtor::~cTypeCtor() = default;

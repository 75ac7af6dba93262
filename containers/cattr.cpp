// Handles to attributes.

#include "qrv/containers/cattr.h"

#include "containers/as_map.h"
#include "containers/ccompare.h"
#include "core/cerr_object.h"
#include "qrv/containers/cmapobj.h"
#include "qrv/core/cattrhash.h"
#include "qrv/core/cobjd.h"

#include <ostream>

namespace {

objref text_key(char const *key) { return key ? own_key(std::string(key)) : objref(); }

bool has_type(objref const &value, cTypeObj const &type) {
    return value && &value->type() == &type;
}

} // namespace

cAttr::cAttr(objref const &owner, objref const &key) noexcept : owner_(owner), key_(key) {}
cAttr::cAttr(objref const &owner, std::string const &key) : cAttr(owner, own_key(key)) {}
cAttr::cAttr(objref const &owner, char const *key) : cAttr(owner, text_key(key)) {}
cAttr::cAttr(objref const &owner, int key) : cAttr(owner, own_key(key)) {}
cAttr::cAttr(cAttr const &other) noexcept : owner_(other.owner_), key_(other.key_) {}
cAttr::~cAttr() = default;

objref cAttr::getattr() const {
    // A null key can't be looked up: containers ask its type for the hash.
    cache_ = usable() && key_ ? owner_->getattr(key_) : cat::bad();
    return cache_;
}

objref cAttr::getattr(cTypeObj const &type) const {
    objref value = getattr();
    return has_type(value, type) ? value : cat::bad();
}

cObj *cAttr::operator->() const {
    objref const value = getattr(); // the cache holds it too
    return value ? value.get() : cat::bad().get();
}

cObj &cAttr::operator*() const { return *operator->(); }

cAttr cAttr::operator[](objref const &key) const { return cAttr(getattr(), key); }
cAttr cAttr::operator[](std::string const &key) const { return cAttr(getattr(), key); }
cAttr cAttr::operator[](char const *key) const { return cAttr(getattr(), key); }
cAttr cAttr::operator[](int key) const { return cAttr(getattr(), key); }

bool cAttr::operator==(cAttr const &other) const {
    return owner_ == other.owner_ && cat::same_key(key_, other.key_);
}

void cAttr::set(cAttr const &other) {
    owner_ = other.owner_;
    key_ = other.key_;
    cache_ = nullptr;
}

void cAttr::put(objref const &value) {
    objref const kept = value; // may be the cache itself
    cache_ = nullptr;
    if (usable() && key_) owner_->setattr(key_, kept);
}

cAttr &cAttr::operator=(objref const &value) {
    put(value);
    return *this;
}

cAttr &cAttr::operator=(cAttr const &other) {
    if (*this != other) put(other.getattr());
    return *this;
}

objref cAttr::swap_to(objref const &value) {
    objref old = getattr();
    put(value);
    return old;
}

objref cAttr::force_type(cTypeObj const &type) {
    if (&type == &cat::type_nil()) return cat::bad();
    objref const present = getattr();
    if (has_type(present, type)) return present;
    put(type.newobj());
    return getattr(type);
}

objref cAttr::force_default(objref const &value) {
    if (!cObj::is_good(value)) return cat::bad();
    objref const present = getattr();
    if (has_type(present, value->type())) return present;
    put(value);
    return getattr(value->type());
}

void cAttr::force_value(objref const &value, bool clone) {
    objref const present = getattr();
    if (value && has_type(present, value->type())) {
        present->assign(value);
    } else if (!clone) {
        put(value);
    } else if (objref const copy = value ? value->clone(true) : objref(); !cObj::is_void(copy)) {
        put(copy);
    }
}

void cAttr::save(cMapObj &map) const {
    objref const copy = getattr();
    if (cat::detach(copy, false)) map.datamap().mapitem(key_, copy);
}

cAttr &cAttr::unsave(cMapObj const &map) {
    cAttrNode const *const saved = key_ ? map.datamap().find(key_) : nullptr;
    if (!saved) return *this;
    objref const content = saved->valref();
    if (objref const present = getattr()) present->assign(content);
    return *this;
}

cAttr cAttr::insert_error(std::string const &text) const {
    begin_error(err_insertion, *owner_, key_) << text;
    raise_eros(); // inserts nothing, even if a handler forgives
    return *this;
}

cAttr cAttr::operator<<(objref const &value) {
    cache_ = nullptr;
    if (!owner_) return *this;
    std::string const &type = owner_->type().name();
    bool const is_sequence = cObj::is_vector(owner_) || cObj::is_set(owner_);
    cMapObj const *const map = is_sequence ? cat::as_map(owner_) : nullptr;
    if (!map) return insert_error("is not defines in type: " + type);
    hashref const hash = map->datamap_ref();
    int const place = cat::as_index(key_);
    if (place < 0 || static_cast<unsigned int>(place) > hash->used())
        return insert_error("in '" + type + "' Out of Range");
    if (!hash->vect_insert(place, value)) return insert_error("in '" + type + "' failed");
    int const next = static_cast<int>(static_cast<unsigned int>(place) + 1);
    return cAttr(owner_, next);
}

cAttr cObj::operator[](objref const &key) { return cAttr(objref::share(this), key); }
cAttr cObj::operator[](std::string const &key) { return cAttr(objref::share(this), key); }
cAttr cObj::operator[](char const *key) { return cAttr(objref::share(this), key); }
cAttr cObj::operator[](int key) { return cAttr(objref::share(this), key); }

// Attribute sets: the objects of types of the metatype "attlist", and these types themselves.
//
// An object shares the specifications of its type through its own member map. Its five low flag
// bits are all set, so that the specifications are looked up from the start.

#include "qrv/containers/cattrset.h"

#include "containers/as_map.h"
#include "containers/cmergebudget.h"
#include "containers/csetup.h"
#include "core/cerr_object.h"
#include "core/cpairs.h"
#include "core/ctext_hooks.h"
#include "qrv/base/platform/cstack.h"
#include "qrv/containers/cattr.h"
#include "qrv/containers/citerobj.h"
#include "qrv/containers/cmapobj.h"
#include "qrv/core/cexe.h"
#include "qrv/core/cobjd.h"

#include <ostream>

namespace {

cTypeObj *as_attlist(cObj *obj) {
    auto *const type = dynamic_cast<cTypeObj *>(obj);
    return type && &type->type() == &cat::typetype_attlist() ? type : nullptr;
}

// The type's specifications; null if a program has stored something else there.
cRef<cMapObj> specs_of(cObj *type) {
    auto *const attlist = as_attlist(type);
    if (!attlist) return nullptr;
    objref const member = attlist->tmember("attspec");
    return cRef<cMapObj>::share(cat::as_map(member));
}

specref as_spec(objref const &value) {
    if (!value || &value->type() != &cat::type_attspec()) return nullptr;
    return specref::share(dynamic_cast<cAttspec *>(value.get()));
}

bool report(cErrText const &error, cObj const &obj, std::string const &found = {}) {
    begin_error(error) << cNamed::found(found) << cNamed::type(obj.type().name()).unsaid();
    return raise_eros();
}

// A few bytes of text can create an object of any size. Beyond the budget its defaults are not
// copied: then an attribute returns the shared default, and the reader refuses the object.
bool may_copy(objref const &value, cObj &holder) {
    cat::owns_charged(value, holder);
    return !cat::merge_exhausted();
}

// The types whose objects are being created, the innermost first. A default may be an object of the
// type itself, and copying it creates another one, which gets no copies of the defaults. Neither
// does an object so deep that the stack is nearly exhausted: a file can declare a chain of types of
// any length.
class cMaking {
  public:
    explicit cMaking(cTypeObj const &type)
        : type_(&type), outer_(innermost), copies_(!cat::stack_low() && !is_made(type)) {
        innermost = this;
    }
    cMaking(cMaking const &) = delete;
    cMaking &operator=(cMaking const &) = delete;
    ~cMaking() { innermost = outer_; }

    bool copies() const noexcept { return copies_; }

  private:
    static bool is_made(cTypeObj const &type) noexcept {
        for (cMaking const *making = innermost; making; making = making->outer_)
            if (making->type_ == &type) return true;
        return false;
    }

    static constinit cMaking *innermost;
    cTypeObj const *type_;
    cMaking *outer_;
    bool copies_;
};

constinit cMaking *cMaking::innermost = nullptr;

// Adds one key to a new object: its specification, and a copy of its default or nil.
void declare(cMapObj &map, objref const &key, specref const &spec, bool copies) {
    map.set_attspec(key, spec);
    objref const value = spec->get_default();
    if (!spec->is_default() || !copies || !may_copy(value, map)) return; // the value stays nil
    cAttrHash &hash = map.datamap();
    hash.mapitem(key, value);
    cAttrNode *const node = hash.find(key);
    // A clone of a container would share its parts, and reading one object would change the
    // default.
    if (node) cat::detach(node->valref(), value->is_container());
}

bool obeys(cAttspec const &spec, objref const &value) {
    if (spec.is_required() && cObj::is_void(value)) return false;
    bool const is_nil = value == cat::nil();
    if (spec.is_fixtype() && !is_nil && (!value || &value->type() != spec.get_type())) return false;
    return !spec.is_fixref() || value == spec.get_default();
}

} // namespace

objref cTomAttrset::newobj(objref type) {
    cTypeObj *const attlist = as_attlist(type);
    return attlist ? objref(make<cMapObj>(attlist, true)) : cat::bad();
}

bool cTomAttrset::create(cObj &obj) {
    cMapObj *const map = cat::as_map(&obj);
    if (!map) return false;
    objref const keep = objref::share(&obj);
    obj.setflags(asf_all);
    if (cRef<cMapObj> const specs = specs_of(&obj.type())) {
        cPairs const declared = pairs_of(specs->datamap());
        cat::merge_charge(declared.size());
        cMaking const making(obj.type());
        for (auto const &[key, value] : declared)
            if (specref const spec = as_spec(value)) declare(*map, key, spec, making.copies());
    }
    obj.setflags(of_const_keys);
    return true;
}

bool cTomAttrset::validate(cObj &obj) {
    cMapObj *const map = cat::as_map(&obj);
    if (!map) return false;
    objref const keep = objref::share(&obj);
    for (auto const &[key, value] : pairs_of(map->datamap())) {
        specref const spec = as_spec(obj.type().getattr(key)); // RUNS USER CODE
        if (!spec || !obeys(*spec, value)) return false;
    }
    return true;
}

bool cTomAttrset::m_assign(cObj &obj, objref &arg) {
    cMapObj *const map = cat::as_map(&obj);
    if (!map || !arg) return false;
    objref const keep = objref::share(&obj);
    if (&arg->type() != &obj.type() && // 1
        !report(err_assign_other_type, obj, arg->type().name()))
        return false;
    objref const source = arg;
    if (!validate(*source)) return report(err_assign_not_valid, obj); // 2
    bool all = true;
    for (auto const &[key, value] : pairs_of(static_cast<cMapObj &>(*source).datamap())) { // 3
        if (cObj::is_void(value)) continue;
        if (cat::may_hold_values(*value) && !cat::merge_allows(obj, key, value)) continue;
        all &= map->datamap().copyitem(key, value, true);
    }
    return all || report(err_assign_failed, obj); // 4
}

objref cTomAttlist::newobj(objref) {
    return make<cTypeObj>(&cat::typetype_attlist(), nullptr, nullptr);
}

// The constructor of every type of this metatype calls this. A second call changes nothing.
bool cTomAttlist::create(cObj &obj) {
    cTypeObj *const type = as_attlist(&obj);
    if (!type || cObj::is_good(type->tmember("attspec"))) return true;
    type->set_tmember("newobj", make<cExeMember>(cTomAttrset::newobj));
    type->set_tmember("create", make<cExeMember>(cTomAttrset::create));
    type->set_tmember("validate", make<cExeMember>(cTomAttrset::validate));
    type->set_tmember("assign", make<cExeMember>(cTomAttrset::m_assign));
    type->set_tmember("setattr", make<cExeMember>(cTomMap::setattr));
    type->set_tmember("getattr", make<cExeMember>(cTomMap::getattr));
    type->set_tmember("write", make<cExeMember>(text_hooks.attrset.write));
    type->set_tmember("read", make<cExeMember>(text_hooks.attrset.read));
    type->set_tmember("equal", make<cExeMember>(cTomMap::equal_sorted));
    type->set_tmember("iterobj", make<cExeMember>(cTomMap::iterobj));
    type->set_tmember("wformat", cat::of("wc"));
    type->set_tmember("attspec", make<cMapObj>());
    return true;
}

bool cTomAttlist::m_assign(cObj &type, objref &arg) {
    cRef<cMapObj> const specs = specs_of(&type);
    if (!specs || !arg) return false;
    objref const keep = objref::share(&type);
    if (!cat::merge_allows(type, own_key(std::string("attspec")), arg)) return true;
    cPairs found; // copied first: arg may be the type itself, or a part of it
    for (cIterObj it = arg->begin(); it.valid(); ++it) found.emplace_back(it.key(), it.valref());
    specs->clear(); // RE-ENTERS
    for (auto const &[key, value] : found)
        if (as_spec(value)) cAttr(specs, key) = value;
    type.changed();
    return true;
}

bool cTomAttlist::setattr(cObj &type, objref &key, objref &value) {
    cRef<cMapObj> const specs = specs_of(&type);
    objref const keep = objref::share(&type);
    if (!specs || !specs->setattr(key, value)) return false;
    type.changed();
    return true;
}

objref cTomAttlist::getattr(objref type, objref key) {
    cRef<cMapObj> const specs = specs_of(type);
    return specs ? specs->getattr(key) : cat::bad();
}

objref cTomAttlist::iterobj(objref type) {
    cRef<cMapObj> const specs = specs_of(type);
    return specs ? specs->iterobj() : cat::bad();
}

void cat::setup_attlist(cTypeObj &type) {
    type.set_tmember("newobj", make<cExeMember>(cTomAttlist::newobj));
    type.set_tmember("create", make<cExeMember>(cTomAttlist::create));
    type.set_tmember("assign", make<cExeMember>(cTomAttlist::m_assign));
    type.set_tmember("setattr", make<cExeMember>(cTomAttlist::setattr));
    type.set_tmember("getattr", make<cExeMember>(cTomAttlist::getattr));
    type.set_tmember("write", make<cExeMember>(text_hooks.attlist.write));
    type.set_tmember("read", make<cExeMember>(text_hooks.attlist.read));
    type.set_tmember("iterobj", make<cExeMember>(cTomAttlist::iterobj));
    type.set_tmember("wformat", cat::of("wc"));
}

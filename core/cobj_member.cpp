// Members of objects, which are stored in the hash ommap. A member is looked up in the object, then
// in its type, then in the global members. Two keys are reserved: "changed" for the signal of that
// name, and "//" for the comment.

#include "core/cerr_object.h"
#include "core/cholders.h"
#include "core/cmember_lookup.h"
#include "core/cregistry.h"
#include "core/ctext_hooks.h"
#include "qrv/core/cattrhash.h"
#include "qrv/core/cexe.h"
#include "qrv/core/cobjd.h"

#include <ostream>
#include <sstream>
#include <utility>

namespace {

// gmember_ returns this if it can't store the key, or does not find it afterwards. Each such call
// empties it, so that a value written to it is never read.
objref &scratch_member() {
    static constinit objref scratch;
    scratch = nullptr;
    return scratch;
}

} // namespace

bool cObj::append(objref const &item) {
    if (!is_good(item)) return false;
    static cat::cMemberName const name("append");
    return cat::call_succeeds(*this, name, item);
}

void cObj::append_dissection(std::string const &text, char delimiter) {
    objref const self = objref::share(this);
    std::istringstream pieces(text); // a copy: the target may own the text
    std::string piece;
    while (std::getline(pieces, piece, delimiter)) append(cat::of(piece)); // RUNS USER CODE
}

bool cObj::copyitem(objref const &key, objref const &value, bool clone_new) {
    objref const present = getattr(key);
    if (is_good(present)) return present->assign(value);
    // DELIBERATE: the clone is dropped and the argument itself stored; callers share it.
    //   Pinned: copyitem_with_clone_new_stores_the_value_itself
    if (clone_new && value) (void)value->clone(false);
    if (!is_good(value) || is_void()) return false;
    return setattr(key, value);
}

void cObj::leave_ommap() noexcept {
    if (ommap_ && ommap_->father() == this) ommap_->father(nullptr, true);
}

void cObj::ommap(hashref const &hash) {
    objref self = objref::share(this); // the old map may hold the last owner of this object
    if (hash != ommap_) leave_ommap();
    hashref old = std::exchange(ommap_, hash);
    if (ommap_) ommap_->father(this, false);
    if (ommap_) cHolders::note_members(*ommap_);
    old = nullptr;                 // RE-ENTERS
    if (self->refs() == 1) return; // only `self` is left, so the object is destroyed now
    self = nullptr;
    changed(); // RE-ENTERS: fires the signal of the new map
}

bool cObj::set_omember(std::string const &key, objref value) {
    return set_omember(own_key(key), std::move(value));
}

// If false, the value must not be stored, and set_omember returns `result`. Any type can have the
// flag of executables, so the class of the object is tested too.
bool cObj::may_be_member(objref const &key, objref const &value, bool &result) {
    cExeObj *const exe = cat::as_exe(value);
    if (exe) {
        exe->set_name(text_hooks.as_string(key));
        result = false;
        if (!exe->validate_exe(this)) return false;
        if (value->typeflags_of(tf_free_exe) || dynamic_cast<cExeMember *>(exe)) return true;
    }
    std::string const text = text_hooks.as_text(key);
    begin_error(err_not_own_member, *this) << cNamed::key(text) << "', must be cExeMember";
    result = raise_eros();
    return false;
}

bool cObj::set_omember(objref const &key, objref value) {
    if (!ommap_ && is_kill(value)) return true;
    bool const executable = value && value->is_exe();
    if (bool result = false; executable && !may_be_member(key, value, result)) return result;
    if (!ommap_) ommap_ = make<cAttrHash>(this);
    objref self = objref::share(this); // the old value may be the last owner of this object
    bool const stored = hashref(ommap_)->mapitem(key, value); // RE-ENTERS
    if (stored && executable) setflags(of_exe_member);
    if (ommap_ && ommap_->empty()) ommap(hashref());
    if (self->refs() == 1) return stored; // only `self` is left, so the object is destroyed now
    self = nullptr;
    changed(); // RE-ENTERS: may destroy this object
    return stored;
}

objref cObj::omember(objref const &key) const {
    return ommap_ ? ommap_->getitem(key) : cat::badfind();
}

objref cObj::omember(std::string const &key) const {
    return ommap_ ? ommap_->getitem(key) : cat::badfind();
}

objref cObj::force_omember(objref const &key, cTypeObj const &type) {
    if (&type == &cat::type_nil()) return cat::bad();
    objref member = omember(key);
    if (member && &member->type() == &type) return member;
    set_omember(key, type.newobj());
    member = omember(key);
    return member && &member->type() == &type ? member : cat::bad();
}

objref cObj::force_omember(std::string const &key, cTypeObj const &type) {
    return force_omember(own_key(key), type);
}

objref cObj::force_omember(objref const &key, objref const &example) {
    if (!is_good(example)) return cat::bad();
    cTypeObj const *const type = &example->type();
    objref member = omember(key);
    if (member && &member->type() == type) return member;
    set_omember(key, example);
    member = omember(key);
    return member && &member->type() == type ? member : cat::bad();
}

objref cObj::force_omember(std::string const &key, objref const &example) {
    return force_omember(own_key(key), example);
}

objref cObj::gmember(objref const &key) const {
    if (objref value = omember(key); is_good(value)) return value;
    if (objref value = type().tmember(key); is_good(value)) return value;
    return cat::gmember(key);
}

objref cObj::gmember(std::string const &key) const {
    return cat::member_named(*this, cat::cMemberName(key));
}

objref &cObj::gmember_(objref const &key) {
    for (bool made = false;; made = true) {
        cAttrNode *node = ommap_ ? ommap_->find(key) : nullptr;
        if (!node) node = type().tmmap().find(key);
        if (!node && core.global_hash) node = core.global_hash->find(key);
        if (node) return node->valref_();
        if (made || !set_omember(key, cat::nil())) return scratch_member();
    }
}

objref &cObj::gmember_(std::string const &key) { return gmember_(own_key(key)); }

bool cObj::get_comment(std::string &text) const {
    objref const member = omember("//");
    if (is_void(member)) return false;
    if (&member->type() == &cat::type_string()) {
        text = text_hooks.as_string(member);
        return true;
    }
    objref const holder = objref::adopt(new cObjDR<std::string>(text));
    holder->obid(0);
    return holder->convert(member);
}

// Only an object with members can have the signal.
void cObj::changed() const {
    if (ommap_ && core.fire_changed) core.fire_changed(*this); // RE-ENTERS: may destroy *this
}

bool cObj::set_comment(std::string const &text, bool replace) {
    if (!replace && !is_void(omember("//"))) return false;
    return set_omember("//", cat::of(text));
}

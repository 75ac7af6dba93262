// The operations of cAttrHash. An operation that runs user code holds everything that it needs
// afterwards: the hash by cKeep, nodes by cHold, keys and values by separate references, since an
// argument may be part of the removed node.

#include "core/cattrhash_destroy.h"
#include "core/cattrhash_detail.h"
#include "core/cattrhash_insert.h"
#include "core/cholders.h"
#include "core/cmember_lookup.h"
#include "core/cset_index.h"
#include "core/ctable_growth.h"
#include "core/ctext_hooks.h"
#include "qrv/core/cexe.h"
#include "qrv/core/cobjd.h"
#include "qrv/diagnostics/cerr.h"

namespace {
// Null for a null text, which is a null key.
objref key_of(char const *text) { return text ? own_key(std::string(text)) : objref(); }
} // namespace

cAttrHash::cAttrHash(cObj *father) : size_(first_size), father_(father) {}

cAttrHash::cAttrHash(cAttrHash const &) : cAttrHash(static_cast<cObj *>(nullptr)) {}

cAttrHash::~cAttrHash() {
    set_index_ = nullptr;
    incref(); // so that user code that shares and drops this hash doesn't destroy it again
    if (used_) cDestruction(*this).run();
}

cAttrHash &cAttrHash::operator=(cAttrHash const &other) {
    cKeep const keep(this), keep_other(&other);
    clear();
    for (cAttrNode *node = other.first(); node;) {
        cHold const hold(node);
        objref const key = node->key(), value = node->value_;
        *force_node(key) = value; // RE-ENTERS
        node = other.next(node);  // null if the node was removed
    }
    return *this;
}

// Not inlined: where the hash is a member, g++ would warn of the delete in cKeep, which is never
// reached there.
[[gnu::noinline]] void cAttrHash::clear() {
    cKeep const keep(this);
    remove_all();
}

void cAttrHash::father(cObj *father, bool force) noexcept {
    if (!father_ || force) father_ = father;
}

void cAttrHash::flags(int bits) noexcept {
    for (cAttrNode *node = first(); node; node = next(node)) node->cObjBase::flags(bits & 3);
}

cAttrNode *cAttrHash::next(cAttrNode const *node) const noexcept {
    return node && node->table_ == this ? node_at(node->cLink::next()) : nullptr;
}

cAttrNode *cAttrHash::prev(cAttrNode const *node) const noexcept {
    return node && node->table_ == this ? node_at(node->cLink::prev()) : nullptr;
}

// --- lookup

cAttrNode *cAttrHash::find(char const *key) const {
    return key ? find(std::string_view(key)) : nullptr;
}

cAttrNode *cAttrHash::findpos(unsigned int position) const {
    if (position >= used_) return nullptr;
    if (is_vector_) return find(static_cast<int>(position));
    cLink *link = &anchor_;
    if (position < used_ / 2)
        for (unsigned int i = 0; i <= position; ++i) link = link->next();
    else
        for (unsigned int i = used_; i > position; --i) link = link->prev();
    return node_at(link);
}

cAttrNode *cAttrHash::findpos(cAttrHash const *hash, unsigned int position) {
    return hash ? hash->findpos(position) : nullptr;
}

int cAttrHash::posofkey(objref const &key) const {
    if (!key) return -1;
    cKeep const keep(this);
    objref const searched = key;
    int position = 0;
    for (cAttrNode *node = first(); node; ++position) {
        cHold const hold(node);
        objref const stored = node->key();
        if (stored->type().hasheq(stored, searched)) return position; // RUNS USER CODE
        node = next(node);
    }
    return -1;
}

int cAttrHash::posofkey(std::string const &key) const { return posofkey(make_key(key)); }
int cAttrHash::posofkey(char const *key) const { return posofkey(key_of(key)); }
int cAttrHash::posofkey(cAttrHash const *hash, objref const &key) {
    return hash ? hash->posofkey(key) : -1;
}

cAttrNode *cAttrHash::findvalref(cObj const *value) const noexcept {
    for (cAttrNode *node = first(); node; node = next(node))
        if (node->value_.get() == value) return node;
    return nullptr;
}

cAttrNode *cAttrHash::findvalue(cObj const &value) const {
    cKeep const keep(this);
    for (cAttrNode *node = first(); node;) {
        cHold const hold(node);
        objref const stored = node->value_;
        if (stored && value.equal(*stored)) // RUNS USER CODE
            return node->dead_ ? nullptr : node;
        node = next(node);
    }
    return nullptr;
}

cAttrNode *cAttrHash::findvalue(objref const &value) const {
    objref const searched = value;
    return searched ? findvalue(*searched) : nullptr;
}

objref cAttrHash::getitem(objref const &key) const {
    cAttrNode const *const node = find(key);
    return node ? node->value_ : cat::badfind();
}
objref cAttrHash::getitem(std::string const &key) const {
    cAttrNode const *const node = find(key);
    return node ? node->value_ : cat::badfind();
}
objref cAttrHash::getitem(char const *key) const {
    cAttrNode const *const node = find(key);
    return node ? node->value_ : cat::badfind();
}

// --- changes by key

bool cAttrHash::setitem(objref const &key, objref const &value) {
    if (cObj::is_void(key) || cObj::is_bad(value)) return false;
    objref const held = value; // the search runs user code
    cAttrNode *const node = locate(key);
    if (!node) return false;
    try {
        *node = held; // RE-ENTERS
    } catch (cErr const &) {
        return false;
    }
    return true;
}
bool cAttrHash::setitem(std::string const &key, objref value) {
    return setitem(make_key(key), value);
}
bool cAttrHash::setitem(char const *key, objref value) { return setitem(key_of(key), value); }
bool cAttrHash::setitem(cAttrHash *hash, objref const &key, objref const &value) {
    return hash && hash->setitem(key, value);
}

bool cAttrHash::mapitem(objref const &key, objref const &value) {
    if (cObj::is_void(key)) return false;
    if (cObj::is_kill(value)) return delitem(key);
    if (cObj::is_bad(value)) return false;
    cKeep const keep(this);
    objref const held_key = key, held_value = value;
    if (held_value->is_exe() && !accept_exe(held_key, held_value)) return false;
    cAttrNode *const node = force_node(held_key);
    node->mapped_ = true;
    node->set_value(held_value); // RE-ENTERS
    return true;
}
bool cAttrHash::mapitem(std::string const &key, objref value) {
    if (cObj::is_bad(value) || value->is_exe() || !cAttrInsert::is_ready(*this))
        return mapitem(make_key(key), value);
    cAttrInsert::cPlace const place = cAttrInsert::text(*this, key, value);
    if (place.is_new) return true;
    place.node->mapped_ = true;
    place.node->set_value(std::move(value)); // RE-ENTERS
    return true;
}
bool cAttrHash::mapitem(char const *key, objref value) { return mapitem(key_of(key), value); }
bool cAttrHash::mapitem(cAttrHash *hash, objref const &key, objref const &value) {
    return hash && hash->mapitem(key, value);
}

// A function gets its key as its name, even if it is then refused. The flag of the type only claims
// that the object is executable, so the class is tested too.
bool cAttrHash::accept_exe(objref const &key, objref const &value) {
    cExeObj *const exe = cat::as_exe(value);
    if (!exe) return false;
    exe->set_name(text_hooks.as_string(key));
    cHolders::note_own_method(father_, key);
    return exe->validate_exe(father_);
}

bool cAttrHash::copyitem(objref const &key, objref const &value, bool detach_new) {
    cKeep const keep(this);
    objref const held_key = key, held_value = value;
    cAttrNode const *const node = find(held_key);
    if (node && !cObj::is_void(node->value_)) {
        objref const present = node->value_;
        return present->assign(held_value); // RUNS USER CODE
    }
    if (!mapitem(held_key, held_value)) return false;
    return !detach_new || detach(held_key);
}

bool cAttrHash::delitem(objref const &key) {
    if (cObj::is_void(key)) return false;
    if (cAttrNode *const node = locate(key)) remove(node); // RE-ENTERS; the key may be the node's
    return true;
}
bool cAttrHash::delitem(std::string const &key) {
    if (cAttrNode *const node = find(key)) remove(node);
    return true;
}
bool cAttrHash::delitem(char const *key) { return key && delitem(std::string(key)); }

cAttrNode *cAttrHash::erase(objref const &key) {
    cAttrNode *const node = find(key);
    if (!node) return nullptr;
    cAttrNode *const follower = next(node);
    cHold const hold(follower);
    remove(node); // RE-ENTERS
    return follower && !follower->dead_ ? follower : nullptr;
}

cAttrNode *cAttrHash::insert(objref const &key, objref const &value, cAttrNode *before) {
    if (cObj::is_void(key)) return nullptr;
    cKeep const keep(this);
    cHold const hold_place(before);
    objref const held_key = key, held_value = value;
    cAttrNode *const node = force_node(held_key);
    cHold const hold(node);
    node->mapped_ = true;
    if (before && before->table_ == this) move_before(*node, *before);
    if (held_value && held_value->is_exe()) cHolders::note_own_method(father_, node->key());
    node->set_value(held_value); // RE-ENTERS
    return node->dead_ ? nullptr : node;
}

void cAttrHash::rename(objref const &old_key, objref const &new_key) {
    if (cObj::is_void(new_key)) return;
    cKeep const keep(this);
    objref const from = old_key, to = new_key;
    cAttrNode *const source = find(from);
    if (!source) return;
    cHold const hold(source);
    cAttrNode *const target = force_node(to);
    if (target == source) return;
    target->mapped_ = true;
    if (source->dead_) return; // cloning the new key has removed it
    objref const lost = target->value_;
    target->set_value(source->value_);
    move_before(*target, *source); // target takes the position of source
    remove(source);                // RE-ENTERS
} //                                  RE-ENTERS: `lost` is released

bool cAttrHash::detach_node(cAttrNode const *node) const {
    if (!node) return false;
    cKeep const keep(this);
    cHold const hold(node);
    return node->detach(); // RUNS USER CODE
}

bool cAttrHash::detach(objref const &key) const { return detach_node(find(key)); }
bool cAttrHash::detach(std::string const &key) const { return detach_node(find(key)); }
bool cAttrHash::detach(char const *key) const { return detach_node(find(key)); }
bool cAttrHash::detach(int key) const { return detach_node(find(key)); }

bool cAttrHash::detach() const {
    cKeep const keep(this);
    bool all = true;
    for (cAttrNode *node = first(); node;) {
        cHold const hold(node);
        all = detach_node(node) && all;
        node = next(node);
    }
    return all;
}

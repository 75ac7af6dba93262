// Cursors. The position is a link: null, the ring's anchor (the end), or a node. The cursor holds
// the node's memory, so that is_dead() also works after the node was deleted. Only a link that is
// neither null nor the anchor is converted to a node.
//
// Following: the slot is a member of the iterator, but members can be shared, moved and held by any
// code. So slot and iterator have plain pointers to each other, and the one that is destroyed first
// clears the other's pointer: a slot without its iterator calls nothing.

#include "qrv/containers/citerobj.h"

#include "qrv/containers/cmapobj.h"
#include "qrv/containers/csignalobj.h"
#include "qrv/core/cobjd.h"

namespace {

constexpr int end_place = -1;
constexpr int last_place = -2;

} // namespace

class cIterObj::cFollower final : public cObjSlot {
  public:
    explicit cFollower(cIterObj &it) : cObjSlot(it, &update), it_(&it) {}
    cFollower(cFollower const &) = delete;
    cFollower &operator=(cFollower const &) = delete;
    ~cFollower() override {
        if (it_) it_->follower_ = nullptr;
    }
    // Call when the iterator is destroyed, or uses another slot.
    void leave() {
        it_ = nullptr;
        function(nullptr);
        disconnect();
    }

  private:
    static bool update(cObj &target) {
        static_cast<cIterObj &>(target).update(); // RE-ENTERS: may destroy *this
        return true;
    }

    cIterObj *it_;
};

cIterObj::cIterObj(cTypeObj *type) : cObj(type) {}

cIterObj::cIterObj() : cIterObj(&cat::type_iterator()) { create(); }

cIterObj::cIterObj(cIterObj const &other, bool rewind) : cIterObj(&cat::type_iterator()) {
    take(other.link_, other.hash_);
    if (rewind && hash_) move(hash_->anchor()->next());
    create();
}

cIterObj::cIterObj(hashref const &hash) : cIterObj(&cat::type_iterator()) {
    if (hash) take(hash->anchor()->next(), hash);
    create();
}

cIterObj::cIterObj(cObj *source, bool follow) : cIterObj(&cat::type_iterator()) {
    objref const keep = objref::share(source);
    if (source) take(source->begin());
    create();
    if (source && follow) this->follow(*source, "updatefromobj");
}

cIterObj::~cIterObj() {
    if (follower_) follower_->leave();
    move(nullptr);
}

void cIterObj::follow(cObj &source, std::string const &member) {
    if (follower_) std::exchange(follower_, nullptr)->leave();
    objref const keep = objref::share(&source);
    auto const slot = make<cFollower>(*this);
    follower_ = slot.get();
    set_omember(member, slot);                           // RE-ENTERS
    source.force_omember("changed", cat::type_signal()); // RE-ENTERS
    if (follower_ != slot) return;                       // replaced by user code
    if (cSignal const *const changed = source.changed_signal()) changed->connect(*slot);
}

cIterObj &cIterObj::operator=(cIterObj const &other) {
    take(other.link_, other.hash_);
    return *this;
}

cIterObj &cIterObj::operator=(cObj const &other) {
    assign(other);
    return *this;
}

bool cIterObj::at_node() const noexcept { return link_ && hash_ && link_ != hash_->anchor(); }

void cIterObj::move(link *place) noexcept {
    if (place == link_) return;
    cAttrNode const *const old = at_node() ? hash_->node_at(link_) : nullptr;
    link_ = place;
    if (at_node()) hash_->node_at(link_)->hold();
    if (old) old->unhold();
}

// Holds the new node before it releases the old one: they may be the same.
void cIterObj::take(link *place, hashref const &hash) {
    hashref const old_hash = std::exchange(hash_, hashref(hash));
    link *const old = std::exchange(link_, place);
    if (at_node()) hash_->node_at(link_)->hold();
    if (old && old_hash && old != old_hash->anchor()) old_hash->node_at(old)->unhold();
} // RE-ENTERS: the old hash is released

bool cIterObj::valid() const noexcept { return at_node() && !hash_->node_at(link_)->is_dead(); }

cAttrNode *cIterObj::node() const noexcept {
    if (at_node()) return hash_->node_at(link_);
    return static_cast<cAttrNode *>(
        static_cast<void *>(link_)); // the end position: an address, not a node
}

objref const &cIterObj::key() const {
    return cAttrNode::key(valid() ? hash_->node_at(link_) : nullptr);
}

objref const &cIterObj::valref() const noexcept {
    return valid() ? hash_->node_at(link_)->valref() : cat::bad();
}

cObj &cIterObj::value() const noexcept {
    objref const &ref = valref();
    return ref ? *ref : *cat::bad();
}

bool cIterObj::valid_value() const noexcept { return valid() && !is_void(valref()); }

int cIterObj::key_as_index() const noexcept {
    return cAttrNode::key_as_index(valid() ? hash_->node_at(link_) : nullptr);
}

cIterObj &cIterObj::operator++() noexcept {
    move(at_node() && !valid() ? hash_->anchor() : link_->next());
    return *this;
}

cIterObj &cIterObj::operator--() noexcept {
    move(at_node() && !valid() ? hash_->anchor() : link_->prev());
    return *this;
}

cIterObj cIterObj::operator++(int) {
    cIterObj before(*this);
    ++*this;
    return before;
}

cIterObj cIterObj::operator--(int) {
    cIterObj before(*this);
    --*this;
    return before;
}

int cIterObj::size() const noexcept { return hash_ ? static_cast<int>(hash_->used()) : 0; }

bool cIterObj::empty() const noexcept { return cAttrHash::empty(hash_); }

int cIterObj::pos() const noexcept {
    if (!valid()) return -1;
    int place = 0;
    for (link const *at = hash_->anchor()->next(); at != link_; at = at->next()) ++place;
    return place;
}

bool cIterObj::setpos(int n) noexcept {
    if (!hash_) return false;
    link *const anchor = hash_->anchor();
    if (n == end_place) {
        move(anchor);
        return true;
    }
    if (n == last_place) {
        move(anchor->prev());
        return !hash_->empty();
    }
    cAttrNode *const node = hash_->findpos(n < 0 ? 0u : static_cast<unsigned int>(n));
    if (node) move(node);
    return node != nullptr;
}

bool cIterObj::setkey(objref const &key) {
    hashref const hash = hash_;
    objref const wanted = key;                                   // may be a key of the hash
    cAttrNode *const node = hash ? hash->find(wanted) : nullptr; // RUNS USER CODE
    if (!node || hash_ != hash) return false;                    // user code set another hash
    move(node);
    return true;
}

bool cIterObj::setkey(std::string const &key) { return setkey(make_key(key)); }

bool cIterObj::update() {
    if (!valid()) move(nullptr); // the end position has no node
    return link_ != nullptr;
}

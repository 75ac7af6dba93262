// Cursors. The position is a link: null, the ring's anchor (the end), or a node whose memory is
// held, so that a node deleted under a cursor can still be asked whether it is dead. Only what is
// neither null nor the anchor is ever turned into a node.

#include "qrv/containers/citerobj.h"

#include "qrv/containers/cmapobj.h"
#include "qrv/core/cobjd.h"

namespace {

constexpr int end_place = -1;
constexpr int last_place = -2;

} // namespace

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

cIterObj::cIterObj(cObj *source) : cIterObj(&cat::type_iterator()) {
    if (source) {
        cIterObj const start = source->begin();
        take(start.link_, start.hash_);
    }
    create();
}

cIterObj::~cIterObj() { move(nullptr); }

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

void cIterObj::take(link *place, hashref const &hash) {
    hashref const new_hash = hash;
    move(nullptr);
    hash_ = new_hash;
    move(place);
}

bool cIterObj::valid() const noexcept { return at_node() && !hash_->node_at(link_)->is_dead(); }

cAttrNode *cIterObj::node() const noexcept {
    if (at_node()) return hash_->node_at(link_);
    return static_cast<cAttrNode *>(
        static_cast<void *>(link_)); // the end position: an address, not a node
}

objref const &cIterObj::key() const noexcept {
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

std::string cIterObj::key_as_string() const { return cat::as_string(key()); }

int cIterObj::key_as_index() const noexcept { return cat::as_index(key()); }

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
    cAttrNode *const node = hash_ ? hash_->find(key) : nullptr;
    if (node) move(node);
    return node != nullptr;
}

bool cIterObj::setkey(std::string const &key) { return setkey(make_key(key)); }

bool cIterObj::update() {
    if (!valid()) move(nullptr); // the end position isn't on the ring either
    return link_ != nullptr;
}

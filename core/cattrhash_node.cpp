// cAttrNode; nil_attr(), the node for entries that do not exist; and the sort orders of nodes.

#include "core/cattrhash_detail.h"
#include "core/cbuiltin.h"
#include "core/cerr_object.h"
#include "core/cholders.h"
#include "core/cregistry.h"
#include "core/cset_index.h"
#include "core/ctext_hooks.h"
#include "qrv/core/cobjd.h"

#include <ostream>

namespace {

constinit cAttrNode *nil_attr_node = nullptr;
constinit objref const *null_key = nullptr;

constexpr int type_locked = 2;

cObj const &key_object(cAttrNode const *node) {
    objref const &key = cAttrNode::key(node);
    return key ? *key : *cat::nil();
}

} // namespace

cAttrNode::cAttrNode(objref const &key) : cAttrNode(key, cat::nil()) {}

cAttrNode::cAttrNode(objref const &key, objref const &value)
    : cHashNode(clone_key(key)), value_(value), anid_(an_lstid++) {
    cHolders::enter(value_);
}

cAttrNode::cAttrNode(cAdopt, objref &&key, objref &&value) noexcept
    : cHashNode(std::move(key)), value_(std::move(value)), anid_(an_lstid++) {
    cHolders::enter(value_);
    key_->obid(++ob_lstid_); // the id that a clone of the key would get
}

cAttrNode::cAttrNode(cAttrNode const &other)
    : cHashNode(clone_key(other.key())), cObjBase(other), value_(other.value_), anid_(an_lstid++) {
    cHolders::enter(value_);
}

cAttrNode::~cAttrNode() {
    if (table_) table_->unlink_node(*this);
    cHolders::leave(value_);
    if (!lazy_) return;
    value_ = nullptr; // RE-ENTERS: released before the key
    uncount_key();
}

// A private copy, so that a caller who changes the key object can't damage the table. Strings and
// ints are copied directly, with the same effect as clone().
objref cAttrNode::clone_key(objref const &key) {
    if (cObj::is_void(key)) return key;
    switch (cAttrHash::kind_of(key)) {
    case cKeyKind::string_key:
        return cat::make_value(static_cast<cObjDR<std::string> const &>(*key).val());
    case cKeyKind::int_key:
        return cat::make_value(static_cast<cObjDR<int> const &>(*key).val());
    default:
        break;
    }
    objref const copy = key->clone(false); // RUNS USER CODE
    return cObj::is_bad(copy) ? key : copy;
}

void cAttrNode::unhold() const noexcept {
    if (decref()) delete this;
}

int cAttrNode::key_as_index() const {
    if (!lazy_) return cat::as_index(key_);
    return kind_ == cKeyKind::int_key ? key_number() : cat::no_index;
}
cObj &cAttrNode::value() const { return value_ ? *value_ : *cat::bad(); }

objref &cAttrNode::valref_() noexcept {
    before_replacing();
    given_out_ = true;
    if (table_) table_->note_value(*this, nullptr);
    cHolders::forget();
    return value_;
}

bool cAttrNode::detach() const {
    cAttrHash::cHold const hold(this);
    const_cast<cAttrNode *>(this)->before_replacing();
    return cat::detach_value(value_); // RUNS USER CODE
}

objref const &cAttrNode::key(cAttrNode const *node) {
    if (node) return node->key();
    if (!null_key) null_key = new objref;
    return *null_key;
}
int cAttrNode::key_as_index(cAttrNode const *node) {
    return node ? node->key_as_index() : cat::no_index;
}
objref const &cAttrNode::valref(cAttrNode const *node) { return node ? node->value_ : cat::bad(); }
cObj &cAttrNode::value(cAttrNode const *node) { return node ? node->value() : *cat::bad(); }

cAttrNode &cAttrNode::operator=(objref const &value) {
    if (dead_ || this == nil_attr_node) return nil_attr();
    if (cObj::is_kill(value)) {
        if (!map() || (!lazy_ && cObj::is_void(key_))) return *this;
        map()->remove(this); // RE-ENTERS
        return nil_attr();
    }
    cAttrHash::cHold const hold(this);
    objref const held = value;
    if (held->is_exe() && table_) cHolders::note_own_method(table_->father(), key());
    if (!refuses(held)) set_value(held); // RE-ENTERS
    return dead_ ? nil_attr() : *this;
}

cAttrNode &cAttrNode::operator=(cObj const *value) {
    return *this = objref::share(const_cast<cObj *>(value));
}

cAttrNode &cAttrNode::operator=(cAttrNode const &other) { return *this = other.value_; }

cAttrNode &cAttrNode::assign(cAttrNode *node, objref const &value) {
    return node ? *node = value : nil_attr();
}

cAttrNode &cAttrNode::assign(cAttrNode *node, cAttrNode const *other) {
    return assign(node, valref(other));
}

bool cAttrNode::refuses(objref const &value) {
    if (!flags_of(type_locked) || cObj::is_void(value_) || value_ == value) return false;
    if (&value->type() == &value_->type()) return false;
    std::string const type = value_->type().name();
    std::string const text = text_hooks.as_text(key()); // RUNS USER CODE: before eros() is used
    begin_error(err_node_type) << cNamed::key(text) << "  value type: " << cNamed::type(type)
                               << "  Flags do not allow operator=";
    raise_eros(); // the value stays even if a handler forgives
    return true;
}

cAttrNode &nil_attr() {
    if (nil_attr_node) return *nil_attr_node;
    auto *const node = new cAttrNode(own_key(std::string("nil_attr")));
    node->key()->obid(0); // belongs to the library, so the census does not count it
    nil_attr_node = node;
    return *node;
}

void cat::forget_nil_attr() noexcept { delete std::exchange(nil_attr_node, nullptr); }

// --- orders

bool cKeyOrder::operator()(cAttrNode const *a, cAttrNode const *b) const {
    return key_object(a).less(key_object(b));
}

bool cValueOrder::operator()(cAttrNode const *a, cAttrNode const *b) const {
    cObj const &left = cAttrNode::value(a), &right = cAttrNode::value(b);
    if (!left.is_container() && !right.is_container()) return left.less(right);
    if (left.is_map()) return !right.is_map() || keyord(a, b);
    if (left.is_vector() && !right.is_map()) return !right.is_vector() || keyord(a, b);
    return false;
}

bool cObidOrder::operator()(cAttrNode const *a, cAttrNode const *b) const {
    return cAttrNode::value(a).obid() < cAttrNode::value(b).obid();
}

bool cAnidOrder::operator()(cAttrNode const *a, cAttrNode const *b) const {
    return b && cAttrNode::anid(a) < b->anid();
}

std::vector<cAttrNode *> cat::nodes_of(cAttrHash const &hash) {
    std::vector<cAttrNode *> nodes;
    nodes.reserve(hash.used());
    for (cAttrNode *node = hash.first(); node; node = hash.next(node)) nodes.push_back(node);
    return nodes;
}

// Copies of all nodes of a hash at once: the hashes of the keys are known, and no key is there yet.

#include "core/cattrhash_detail.h"
#include "core/cattrhash_insert.h"
#include "core/cregistry.h"

#include <cassert>
#include <utility>

bool cAttrInsert::is_copyable(cAttrHash const &hash) noexcept {
    if (!is_ready(hash)) return false;
    cObj const *const bad = core.bad->get(), *const badfind = core.badfind->get();
    for (cAttrHash::cLink *link = hash.anchor_.next(); link != &hash.anchor_; link = link->next()) {
        auto const &node = *static_cast<cAttrNode const *>(link);
        cObj const *const value = node.value_;
        if (!has_plain_key(node) || !value || value == bad || value == badfind ||
            value->type().flags_of(tf_exe))
            return false;
    }
    return true;
}

// As is_ready() says, their `create` does nothing.
objref cAttrInsert::copy_of_key(cAttrNode const &node) {
    if (node.kind_ == cKeyKind::int_key)
        return make<cObjD<int>>(value_of<int>(node.key_), core.integer);
    return make<cObjD<std::string>>(value_of<std::string>(node.key_), core.string);
}

// A hash that had a table may hold keys that collide in an index, so these go in one by one.
void cAttrInsert::copy(cAttrHash &to, cAttrHash const &from) {
    assert(to.empty() && is_copyable(from));
    bool const at_once = to.form_ == cHashForm::few && from.form_ != cHashForm::table;
    if (at_once) to.seeded_ = from.seeded_;
    for (cAttrHash::cLink *link = from.anchor_.next(); link != &from.anchor_; link = link->next()) {
        auto const &node = *static_cast<cAttrNode const *>(link);
        objref key = copy_of_key(node);
        if (at_once)
            to.link_copy(*new cAttrNode(cAttrNode::cAdopt(), std::move(key), node.value_), node);
        else
            adopt(to, std::move(key), node.value_);
    }
    if (at_once) to.make_index();
    to.check();
}

// The node's place in the index comes later, for all nodes at once.
void cAttrHash::link_copy(cAttrNode &node, cAttrNode const &source) noexcept {
    node.hash_ = source.hash_;
    node.kind_ = source.kind_;
    node.table_ = this;
    node.mapped_ = true;
    count_in(node);
    node.link_before(anchor_);
    ++used_;
    ++changes_;
}

// Copies all nodes of a hash at once. The hashes of the keys are known, and the target is empty.

#include "core/cattrhash_detail.h"
#include "core/cattrhash_insert.h"
#include "core/cbuiltin.h"
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

// The copy of an int key is computed from the node's hash when it is needed. If the key was changed
// since its insertion, it differs from the hash, so the copy gets a key object at once.
cAttrNode *cAttrInsert::copy_of(cAttrNode const &node) {
    if (node.kind_ == cKeyKind::int_key && node.key_number() != static_cast<int>(node.hash_))
        return new cAttrNode(cAttrNode::cAdopt(), cat::make_value(node.key_number()),
                             objref(node.value_));
    ++cAttrNode::ob_lstid_;
    bool const is_text = node.kind_ == cKeyKind::string_key;
    return cAttrNode::lazy_node(node.kind_, is_text ? node.key_text() : std::string_view(),
                                node.value_);
}

// A hash with a table may hold keys that collide in an index, so its keys are inserted one by one.
void cAttrInsert::copy(cAttrHash &to, cAttrHash const &from) {
    assert(to.empty() && is_copyable(from));
    bool const at_once = to.form_ == cHashForm::few && from.form_ != cHashForm::table;
    if (at_once) to.seeded_ = from.seeded_;
    for (cAttrHash::cLink *link = from.anchor_.next(); link != &from.anchor_; link = link->next()) {
        auto const &node = *static_cast<cAttrNode const *>(link);
        if (at_once)
            to.link_copy(*copy_of(node), node);
        else if (node.kind_ == cKeyKind::int_key)
            number(to, node.key_number(), node.value_);
        else
            text(to, node.key_text(), node.value_);
    }
    if (at_once) to.make_index();
    to.check();
}

// The caller adds all nodes to the index at once, later.
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

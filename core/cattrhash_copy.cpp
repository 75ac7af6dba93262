// Copies of all nodes of a hash at once: the hashes of the keys are known, and no key is there yet.

#include "core/cattrhash_detail.h"
#include "core/cattrhash_insert.h"
#include "core/cbuiltin.h"

#include <cassert>
#include <utility>

bool cAttrInsert::has_plain_key(cAttrNode const &node) noexcept {
    return node.kind_ == cKeyKind::string_key || node.kind_ == cKeyKind::int_key;
}

bool cAttrInsert::is_copyable(cAttrHash const &hash) noexcept {
    if (!is_ready(hash)) return false;
    for (cAttrNode const *node = hash.first(); node; node = hash.next(node)) {
        cObj const *const value = node->value_;
        if (!has_plain_key(*node) || cObj::is_bad(value) || value->is_exe()) return false;
    }
    return true;
}

// A hash that had a table may hold keys that collide in an index, so these go in one by one.
void cAttrInsert::copy(cAttrHash &to, cAttrHash const &from) {
    assert(to.empty() && is_copyable(from));
    bool const at_once = to.form_ == cHashForm::few && from.form_ != cHashForm::table;
    if (at_once) to.seeded_ = from.seeded_;
    for (cAttrNode const *node = from.first(); node; node = from.next(node)) {
        objref key = node->kind_ == cKeyKind::int_key
                         ? cat::make_value(value_of<int>(node->key_))
                         : cat::make_value(value_of<std::string>(node->key_));
        if (at_once)
            to.link_copy(*new cAttrNode(cAttrNode::cAdopt(), std::move(key), node->value_), *node);
        else
            adopt(to, std::move(key), node->value_);
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

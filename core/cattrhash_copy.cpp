// Copies of all nodes of a hash at once: the hashes of the keys are known, and no key is there yet.

#include "core/cattrhash_detail.h"
#include "core/cattrhash_insert.h"
#include "core/cbuiltin.h"

bool cAttrInsert::has_plain_key(cAttrNode const &node) noexcept {
    return node.kind_ == cKeyKind::string_key || node.kind_ == cKeyKind::int_key;
}

bool cAttrInsert::is_copyable(cAttrHash const &hash) noexcept {
    if (!is_ready(hash)) return false;
    for (cAttrNode const *node = hash.first(); node; node = hash.next(node)) {
        cObj const *const value = node->value_.get();
        if (!has_plain_key(*node) || cObj::is_bad(value) || value->is_exe()) return false;
    }
    return true;
}

void cAttrInsert::copy(cAttrHash &to, cAttrHash const &from) {
    for (cAttrNode const *node = from.first(); node; node = from.next(node)) {
        if (node->kind_ == cKeyKind::int_key)
            number(to, static_cast<int>(node->hash_), node->value_);
        else
            text(to, static_cast<cObjDR<std::string> const &>(*node->key_).val(), node->value_);
    }
}

#include "core/cattrhash_insert.h"

#include "core/cattrhash_detail.h"
#include "core/cbuiltin.h"
#include "core/cregistry.h"

#include <cassert>

bool cAttrInsert::is_ready(cAttrHash const &hash) noexcept {
    unsigned const create = cat::method_bit(mid_create);
    return hash.others_ == 0 && cat::is_builtin(*core.string, create) &&
           cat::is_builtin(*core.integer, create);
}

template <class MakeKey> cAttrInsert::cPlace cAttrInsert::insert(cAttrHash &hash,
                                                                 cAttrHash::cSearch const &search,
                                                                 MakeKey make_key, objref &value) {
    assert(is_ready(hash) && cObj::is_good(value) && !value->is_exe());
    cAttrHash::cFound const found = hash.probe(search);
    if (found.node) return {found.node, false};
    auto *const node = new cAttrNode(cAttrNode::cAdopt(), make_key(), std::move(value));
    hash.link_node(*node, found, search);
    node->mapped_ = true;
    return {node, true};
}

cAttrInsert::cPlace cAttrInsert::text(cAttrHash &hash, std::string_view key, objref value) {
    return insert(
        hash, hash.search_for(key), [&] { return cat::make_value(std::string(key)); }, value);
}

cAttrInsert::cPlace cAttrInsert::number(cAttrHash &hash, int key, objref value) {
    return insert(
        hash, hash.search_for(key), [&] { return cat::make_value(key); }, value);
}

cAttrInsert::cPlace cAttrInsert::adopt(cAttrHash &hash, objref key, objref value) {
    assert(key->refs() == 1 && cAttrHash::kind_of(key) != cKeyKind::other);
    return insert(
        hash, hash.search_for(key), [&] { return std::move(key); }, value);
}

bool cAttrInsert::append(cAttrHash &hash, objref value) {
    if (hash.no_ints_ != 0 || !is_ready(hash)) return hash.vect_append(value);
    int const key = hash.after_last_index();
    cPlace const place = insert(
        hash, hash.search_for(key), [&] { return cat::make_value(key); }, value);
    return place.is_new || hash.vect_append(value);
}

#include "core/cattrhash_insert.h"

#include "core/cattrhash_detail.h"
#include "core/cbuiltin.h"
#include "core/cregistry.h"
#include "core/cscalar.h"

#include <cassert>

bool cAttrInsert::is_ready(cAttrHash const &hash) noexcept {
    unsigned const create = cat::method_bit(mid_create);
    return hash.others_ == 0 && core.integer && cat::is_builtin(*core.string, create) &&
           cat::is_builtin(*core.integer, create);
}

template <class MakeKey>
cAttrInsert::cPlace cAttrInsert::insert(cAttrHash &hash, cAttrHash::cSearch const &search,
                                        MakeKey make_key, objref const &value) {
    assert(is_ready(hash) && cObj::is_good(value) && !value->is_exe());
    cAttrHash::cFound const found = hash.probe(search);
    if (found.node) return {found.node, false};
    std::unique_ptr<cAttrNode> node(new cAttrNode(cAttrNode::cAdopt(), make_key(), value));
    hash.link_node(*node, found, search);
    node->mapped_ = true;
    return {node.release(), true};
}

cAttrInsert::cPlace cAttrInsert::text(cAttrHash &hash, std::string_view key, objref const &value) {
    return insert(
        hash, hash.search_for(key), [&] { return cat::make_value(std::string(key)); }, value);
}

cAttrInsert::cPlace cAttrInsert::number(cAttrHash &hash, int key, objref const &value) {
    return insert(
        hash, hash.search_for(key), [&] { return cat::make_value(key); }, value);
}

cAttrInsert::cPlace cAttrInsert::adopt(cAttrHash &hash, objref &&key, objref const &value) {
    assert(key->refs() == 1 && cAttrHash::kind_of(key) != cKeyKind::other);
    std::string const *const text = cat::value_in<std::string>(key.get());
    cAttrHash::cSearch const search =
        text ? hash.search_for(*text) : hash.search_for(*cat::value_in<int>(key.get()));
    return insert(
        hash, search, [&] { return std::move(key); }, value);
}

bool cAttrInsert::append(cAttrHash &hash, objref const &value) {
    if (hash.no_ints_ != 0 || !is_ready(hash)) return false;
    return number(hash, hash.after_last_index(), value).is_new;
}

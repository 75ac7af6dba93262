#include "core/cattrhash_insert.h"

#include "core/cbuiltin.h"
#include "core/cregistry.h"
#include "core/cscalar.h"

#include <cassert>

bool cAttrInsert::is_ready(cAttrHash const &hash) noexcept {
    unsigned const create = cat::method_bit(mid_create);
    return hash.others_ == 0 && core.integer && cat::is_builtin(*core.string, create) &&
           cat::is_builtin(*core.integer, create);
}

inline cAttrNode &cAttrInsert::add(cAttrHash &hash, cAttrHash::cFound const &found,
                                   cAttrHash::cSearch const &search, objref key, objref value) {
    std::unique_ptr<cAttrNode> node(
        new cAttrNode(cAttrNode::cAdopt(), std::move(key), std::move(value)));
    hash.link_node(*node, found, search);
    node->mapped_ = true;
    return *node.release();
}

template <class MakeKey>
cAttrInsert::cPlace cAttrInsert::insert(cAttrHash &hash, cAttrHash::cSearch const &search,
                                        MakeKey make_key, objref const &value) {
    assert(is_ready(hash) && cObj::is_good(value) && !value->is_exe());
    cAttrHash::cFound const found = hash.probe(search);
    if (found.node) return {found.node, false};
    return {&add(hash, found, search, make_key(), value), true};
}

cAttrInsert::cPlace cAttrInsert::text(cAttrHash &hash, std::string_view key, objref const &value) {
    return insert(
        hash, hash.search_for(key), [&] { return cat::make_value(std::string(key)); }, value);
}

cAttrInsert::cPlace cAttrInsert::number(cAttrHash &hash, int key, objref const &value) {
    return insert(
        hash, hash.search_for(key), [&] { return cat::make_value(key); }, value);
}

cAttrInsert::cKeyPlace::cKeyPlace(cAttrHash const &hash, objref const &key)
    : search_(key->object_class() == cObjClass::string ? hash.search_for(text_of(key))
                                                       : hash.search_for(value_of<int>(key))),
      found_(hash.probe(search_)) {
    assert(fits_index(cAttrHash::kind_of(key)));
    search_.own_key = true;
}

cAttrInsert::cPlace cAttrInsert::adopt(cAttrHash &hash, cKeyPlace const &place, objref &&key,
                                       objref &&value) {
    assert(is_ready(hash) && key->refs() == 1 && cObj::is_good(value) && !value->is_exe());
    if (place.found_.node) return {place.found_.node, false};
    return {&add(hash, place.found_, place.search_, std::move(key), std::move(value)), true};
}

cAttrNode *cAttrInsert::find(cAttrHash const &hash, cKnownText const &key) {
    if (hash.others_ || hash.seeded_) return hash.find(std::string(key.text));
    return hash.probe({key.hash, cKeyKind::string_key, nullptr, key.text}).node;
}

bool cAttrInsert::append(cAttrHash &hash, objref const &value) {
    if (hash.no_ints_ != 0 || !is_ready(hash)) return false;
    int const key = hash.after_last_index();
    bool const is_new = key >= 0; // greater than all others
    if (!is_new || hash.form_ == cHashForm::index || hash.form_ == cHashForm::table)
        return number(hash, key, value).is_new;
    cAttrHash::cSearch search = hash.search_for(key);
    search.own_key = true;
    add(hash, {nullptr, 0, 0, false}, search, cat::make_value(key), value);
    return true;
}

#include "core/cattrhash_insert.h"

#include "core/cbuiltin.h"
#include "core/cregistry.h"
#include "core/cscalar.h"
#include "core/cset_index.h"

#include <cassert>

bool cAttrInsert::is_ready(cAttrHash const &hash) noexcept {
    unsigned const create = cat::method_bit(mid_create);
    return hash.others_ == 0 && core.integer && cat::is_builtin(*core.string, create) &&
           cat::is_builtin(*core.integer, create);
}

// The part of cAttrHash::link_node for a hash without a table in which nothing has to grow.
inline void cAttrInsert::link_last(cAttrHash &hash, cAttrNode &node,
                                   cAttrHash::cFound const &place) {
    hash.link_copy(node, node);
    hash.add_to_index(node, place);
    if (hash.set_index_) [[unlikely]]
        hash.set_index_->enter(node);
    hash.check();
}

inline cAttrNode &cAttrInsert::add(cAttrHash &hash, cAttrHash::cFound const &found,
                                   cAttrHash::cSearch const &search,
                                   std::unique_ptr<cAttrNode> node) {
    bool const is_index = hash.form_ == cHashForm::index;
    if (is_index && found.steps <= long_probe && fits_words(hash.used_ + 1, hash.capacity_)) {
        node->hash_ = search.hash;
        node->kind_ = search.kind;
        link_last(hash, *node, found);
    } else {
        hash.link_node(*node, found, search);
        node->mapped_ = true;
    }
    return *node.release();
}

inline cAttrInsert::cPlace cAttrInsert::insert(cAttrHash &hash, cAttrHash::cSearch const &search,
                                               objref const &value) {
    assert(is_ready(hash) && cObj::is_good(value) && !value->is_exe());
    cAttrHash::cFound const found = hash.probe(search);
    if (found.node) return {found.node, false};
    return {&add(hash, found, search, make_node(search, value)), true};
}

// Uses up one id more, for the key object that mapitem's caller would have created.
std::unique_ptr<cAttrNode> cAttrInsert::make_node(cAttrHash::cSearch const &search,
                                                  objref const &value) {
    ++cAttrNode::ob_lstid_;
    return std::unique_ptr<cAttrNode>(cAttrNode::lazy_node(search.kind, search.text, value));
}

cAttrInsert::cPlace cAttrInsert::text(cAttrHash &hash, std::string_view key, objref const &value) {
    return insert(hash, hash.search_for(key), value);
}

cAttrInsert::cPlace cAttrInsert::number(cAttrHash &hash, int key, objref const &value) {
    return insert(hash, hash.search_for(key), value);
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
    std::unique_ptr<cAttrNode> node(
        new cAttrNode(cAttrNode::cAdopt(), std::move(key), std::move(value)));
    return {&add(hash, place.found_, place.search_, std::move(node)), true};
}

cAttrNode *cAttrInsert::find(cAttrHash const &hash, cKnownText const &key) {
    if (hash.others_ || hash.seeded_) return hash.find(std::string(key.text));
    return hash.probe({key.hash, cKeyKind::string_key, nullptr, key.text}).node;
}

bool cAttrInsert::append(cAttrHash &hash, objref const &value) {
    if (hash.no_ints_ != 0 || !is_ready(hash)) return false;
    bool const is_row = hash.form_ == cHashForm::few || hash.form_ == cHashForm::row;
    if (is_row && hash.is_vector_) {
        hash.append_next(value);
        return true;
    }
    return number(hash, hash.after_last_index(), value).is_new;
}

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

// The next of the keys 0, 1, 2... of a hash that has no table: no search is needed, as no other key
// can be there.
void cAttrInsert::append_next(cAttrHash &hash, objref const &value) {
    int const key = static_cast<int>(hash.used_);
    std::unique_ptr<cAttrNode> made(new cAttrNode(
        cAttrNode::cAdopt(), make<cObjD<int>>(int(key), cat::cBuiltinType{core.integer}), value));
    cAttrNode &node = *made;
    node.hash_ = hash.used_;
    node.kind_ = cKeyKind::int_key;
    if (hash.used_ >= hash.capacity_) hash.make_room(node, 0);
    hash.link_copy(node, node);
    hash.add_to_index(node, {nullptr, 0, 0, false});
    if (hash.set_index_) [[unlikely]]
        hash.set_index_->enter(node);
    hash.check();
    static_cast<void>(made.release());
}

bool cAttrInsert::append(cAttrHash &hash, objref const &value) {
    if (hash.no_ints_ != 0 || !is_ready(hash)) return false;
    bool const is_row = hash.form_ == cHashForm::few || hash.form_ == cHashForm::row;
    if (is_row && hash.is_vector_) {
        append_next(hash, value);
        return true;
    }
    return number(hash, hash.after_last_index(), value).is_new;
}

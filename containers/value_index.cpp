// The index of values: three tables from plain values to the first node that holds them. A lookup
// first adds the nodes that were appended since the last lookup. If nodes were removed or moved, it
// clears the tables and adds all nodes again.

#include "containers/value_index.h"

#include "base/seeded_hash.h"
#include "core/cscalar.h"
#include "qrv/core/cobjd.h"

namespace {
// The value of a plain object.
template <class T> T const &value_of(cObj const &obj) noexcept {
    return static_cast<cObjDR<T> const &>(obj).val();
}
} // namespace

std::size_t cValueIndex::cTextHash::operator()(std::string const &text) const {
    return seeded_hash_bytes(text.data(), text.size());
}

void cValueIndex::forget() noexcept {
    last_ = nullptr;
    ints_.clear();
    texts_.clear();
    bools_[0] = bools_[1] = nullptr;
}

cAttrNode *cValueIndex::find(cObj const &value) {
    if (!cat::is_plain(value)) {
        forget();
        return hash_.findvalue(value);
    }
    take_new_nodes();
    return look_up(value);
}

void cValueIndex::take_new_nodes() {
    if (disturbed_ != hash_.disturbed_) forget();
    disturbed_ = hash_.disturbed_;
    for (cAttrNode *node = last_ ? hash_.next(last_) : hash_.first(); node; node = hash_.next(node))
        take(node);
}

// Adds a node; an earlier node with an equal value stays.
void cValueIndex::take(cAttrNode *node) {
    last_ = node;
    cObj const *const value = node->valref();
    if (!value || !cat::is_plain(*value)) return; // cannot equal a plain value
    if (&value->type() == &cat::type_int())
        ints_.emplace(value_of<int>(*value), node);
    else if (&value->type() == &cat::type_string())
        texts_.emplace(value_of<std::string>(*value), node);
    else if (cAttrNode *&place = bools_[value_of<bool>(*value)]; !place)
        place = node;
}

cAttrNode *cValueIndex::look_up(cObj const &value) const {
    if (&value.type() == &cat::type_int()) {
        auto const found = ints_.find(value_of<int>(value));
        return found == ints_.end() ? nullptr : found->second;
    }
    if (&value.type() == &cat::type_string()) {
        auto const found = texts_.find(value_of<std::string>(value));
        return found == texts_.end() ? nullptr : found->second;
    }
    return bools_[value_of<bool>(value)];
}

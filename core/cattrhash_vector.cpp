// The vector mode of cAttrHash. Keys never move: inserting or removing an index moves values from
// node to node through cAttrNode::operator=, so a locked type may refuse a value. Moving a stored
// null removes the node that receives it; this shortens the vector, and the walk ends there.
//
// While every key is exactly an int, counters give the greatest index and whether the keys are 0 to
// n-1. Otherwise the ring is walked, since converters of key types are user code.

#include "core/cattrhash_detail.h"
#include "core/cattrhash_insert.h"
#include "qrv/core/cattrcursor.h"
#include "qrv/core/cobjd.h"

namespace {
int index_of(objref const &key) {
    int index = -1;
    return cat::int_of(key, index) ? index : -1; // RUNS USER CODE for non-int keys
}
int index_after(int index) noexcept { return static_cast<int>(static_cast<unsigned>(index) + 1); }
} // namespace

bool cAttrHash::is_vector() const {
    if (is_vector_) return true;
    unsigned int index = 0;
    for (cAttrNode *node = first(); node; node = next(node), ++index)
        if (node->key_as_index() != static_cast<int>(index)) return false;
    if (no_ints_ == 0) {
        is_vector_ = greatest_known_ = true;
        greatest_ = static_cast<int>(used_) - 1;
    }
    return true;
}

int cAttrHash::after_last_index() const {
    if (used_ == 0) return 0;
    if (no_ints_ == 0 && greatest_known_) return index_after(greatest_);
    cKeep const keep(this);
    bool const all_ints = no_ints_ == 0;
    int greatest = -1;
    for (cAttrNode *node = first(); node;) {
        cHold const hold(node);
        objref const key = node->key();
        greatest = std::max(greatest, index_of(key));
        node = next(node);
    }
    if (all_ints) {
        greatest_ = greatest;
        greatest_known_ = true;
    }
    return index_after(greatest);
}

void cAttrHash::set_vector() {
    if (is_vector()) return;
    cKeep const keep(this);
    std::vector<objref> values;
    values.reserve(used_);
    for (cAttrNode *node = first(); node; node = next(node)) values.push_back(node->value_);
    clear();
    for (objref const &value : values) mapitem(own_key(after_last_index()), value);
}

void cAttrHash::set_vector(cAttrHash *hash) {
    if (hash) hash->set_vector();
}

bool cAttrHash::vect_append(objref const &value) {
    bool const plain = cObj::is_good(value) && !value->is_exe();
    if (plain && cAttrInsert::append(*this, value)) return true;
    cKeep const keep(this);
    objref const held = value;
    return mapitem(own_key(after_last_index()), held);
}

bool cAttrHash::vect_erase(int i) {
    if (i < 0) return false;
    cKeep const keep(this);
    cAttrNode *node = findpos(static_cast<unsigned int>(i));
    if (node) cAttrCursor::closes(*this, i);
    while (node) {
        cAttrNode *const follower = next(node);
        if (!follower) {
            remove(node);
            break;
        }
        cHold const hold(node), hold_follower(follower);
        *node = follower->value_; // RE-ENTERS
        node = node->dead_ || follower->dead_ ? nullptr : follower;
    }
    return true;
}

bool cAttrHash::vect_insert(int i, objref const &value) {
    if (i < 0 || static_cast<unsigned int>(i) > used_) return false;
    if (cObj::is_kill(value)) return vect_erase(i);
    if (cObj::is_bad(value)) return false;
    cKeep const keep(this);
    objref const held = value;
    if (!mapitem(own_key(after_last_index()), cat::nil())) return false;
    cAttrNode *node = last();
    cAttrCursor::opens(*this, i);
    for (std::uint32_t position = used_ - 1; node && position > static_cast<std::uint32_t>(i);
         --position) {
        cAttrNode *const before = prev(node);
        if (!before) return false;
        cHold const hold(node), hold_before(before);
        *node = before->value_; // RE-ENTERS
        if (node->dead_ || before->dead_) return false;
        node = before;
    }
    if (!node) return false;
    *node = held; // RE-ENTERS
    return true;
}

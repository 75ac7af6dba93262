#include "core/cattrhash_destroy.h"

#include "core/cregistry.h"

constinit cAttrHash::cDestruction *cAttrHash::cDestruction::innermost = nullptr;

inline void cAttrHash::cDestruction::free(cAttrNode &node) {
    bool const counted = node.lazy_;
    cObj *const key = node.key_.release();
    cObj *const value = node.take_value().release();
    if (hash_.form_ == cHashForm::table) hash_.words_[node.slot_] = slot_deleted;
    node.unlink();
    --hash_.used_;
    if (node.refs() == 1) { // its destructor would find nothing to do
        cPooled::operator delete(&node, node.memory());
    } else {
        leave_held(node);
    }
    release(value);
    if (counted) cAttrNode::uncount_key();
    release(key);
}

void cAttrHash::cDestruction::run() {
    while (cAttrNode *const node = hash_.first()) {
        if (in_order_)
            hash_.remove(node); // RE-ENTERS
        else
            free(*node);
    }
}

[[gnu::noinline]] void cAttrHash::cDestruction::leave_held(cAttrNode &node) {
    node.lazy_ = false;
    node.table_ = nullptr;
    node.mapped_ = false;
    node.dead_ = true;
    node.unhold();
}

void cAttrHash::cDestruction::release(cObj *target) {
    if (!target || (target->refs() == 1 && cat::destroy_scalar(target))) return;
    if (!target->decref()) return;
    if (!cat::is_library_class(*target))
        for (cDestruction *outer = innermost; outer && !outer->in_order_; outer = outer->outer_)
            outer->put_in_order();
    cRefTraits<cObj>::destroy(target); // RE-ENTERS
}

// Leaves the hash as if the removed entries had been removed one by one.
void cAttrHash::cDestruction::put_in_order() {
    in_order_ = true;
    ++hash_.changes_;
    ++hash_.disturbed_;
    hash_.others_ = hash_.no_ints_ = 0;
    bool has_greatest = hash_.greatest_ < 0;
    for (cAttrNode *node = hash_.first(); node; node = hash_.next(node)) {
        hash_.others_ += node->kind_ == cKeyKind::other;
        hash_.no_ints_ += node->kind_ != cKeyKind::int_key;
        has_greatest |=
            node->kind_ == cKeyKind::int_key && static_cast<int>(node->hash_) == hash_.greatest_;
    }
    bool const empty = hash_.used_ == 0;
    if (empty) {
        hash_.greatest_ = -1;
        hash_.moved_ = false;
    }
    hash_.greatest_known_ = empty || (hash_.greatest_known_ && has_greatest);
    hash_.is_vector_ = empty;
    if (hash_.form_ != cHashForm::table) hash_.try_table(hash_.size_);
}

#pragma once
// A walk over the ring of a hash during which user code may run. It holds the current node: if user
// code removes that node, the walk ends. The caller must keep the hash alive.

#include "qrv/core/cattrhash.h"

class cRingWalk {
  public:
    explicit cRingWalk(cAttrHash const &hash) noexcept : hash_(hash) { take(hash.first()); }
    cRingWalk(cRingWalk const &) = delete;
    cRingWalk &operator=(cRingWalk const &) = delete;
    ~cRingWalk() { drop(node_); }

    bool valid() const noexcept { return node_ && !node_->is_dead(); }
    cAttrNode *node() const noexcept { return node_; }
    // Copy key and value before user code runs.
    objref const &key() const { return node_->key(); }
    objref const &valref() const noexcept { return node_->valref(); }

    void step() noexcept {
        cAttrNode *const old = node_;
        take(old ? hash_.next(old) : nullptr); // null after a deleted node
        drop(old);
    }

  private:
    void take(cAttrNode *node) noexcept {
        node_ = node;
        if (node_) node_->hold();
    }
    static void drop(cAttrNode const *node) noexcept {
        if (node) node->unhold();
    }

    cAttrHash const &hash_;
    cAttrNode *node_ = nullptr;
};

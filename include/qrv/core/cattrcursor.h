#pragma once
// cAttrCursor walks the ring of a hash while anything may change it. It shares the hash and holds
// its node, so nothing that it refers to is freed. When its node is removed, removed() is true, and
// the next step leads to the node that followed at that time; if that one is removed, too, to the
// node that followed it then, and so on. In a vector, where an insertion or a removal moves values
// to other nodes, it follows its value. Allocates nothing.

#include "qrv/core/cattrhash.h"

#include <cstddef>
#include <iterator>

class QRV_API cAttrCursor {
  public:
    cAttrCursor() noexcept = default;            // at the end, without a hash
    explicit cAttrCursor(hashref hash) noexcept; // at the first node; null: at the end
    cAttrCursor(cAttrCursor const &other) noexcept;
    cAttrCursor(cAttrCursor &&other) noexcept;
    // Assignments destroy the old hash if this was its last owner. RUNS USER CODE
    cAttrCursor &operator=(cAttrCursor const &other);
    cAttrCursor &operator=(cAttrCursor &&other) noexcept(false); // copies; `other` is unchanged
    ~cAttrCursor(); // RUNS USER CODE, if it is the last owner of the hash

    // The node, borrowed. A removed one has neither key nor value. Null at the end, and if the
    // value was removed from a vector.
    cAttrNode *node() const noexcept { return passed_ ? nullptr : node_; }
    hashref const &hash() const noexcept { return hash_; }
    bool at_end() const noexcept { return node_ == nullptr; }
    bool removed() const noexcept { return node_ && (passed_ || node_->is_dead()); }

    // At the end it stays there, also if entries are inserted later.
    cAttrCursor &operator++() noexcept;
    // Compares the nodes; all ends are equal.
    bool operator==(cAttrCursor const &other) const noexcept { return node_ == other.node_; }

  private:
    friend class cAttrHash;

    // The hash removes a held node, which is still in the ring.
    static void leaves(cAttrNode const &node) noexcept;
    // closes() is called before the values after this position of a vector move to the preceding
    // nodes; opens() after a node was added at the end, before the values from this position on
    // move to the next nodes.
    static void closes(cAttrHash const &vector, int position) noexcept;
    static void opens(cAttrHash const &vector, int position) noexcept;
    bool is_from(cAttrHash const &vector, int position) const noexcept;
    void stand_at(cAttrNode *node, cAttrNode *follower) noexcept;

    hashref hash_;
    cAttrNode *node_ = nullptr;     // held
    cAttrNode *follower_ = nullptr; // held; the target of the next step, if node_ was removed
    bool passed_ = false;           // the value was removed, and node_ has the one that followed it
    // The list of all cursors that have a node.
    cAttrCursor *after_ = nullptr;
    cAttrCursor **link_ = nullptr; // points to this cursor; null: not in the list
};

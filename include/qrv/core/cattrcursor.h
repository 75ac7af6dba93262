#pragma once
// cAttrCursor walks the ring of a hash while anything may change it. It shares the hash and holds
// its node, so nothing that it shows is freed. When its node is removed it is removed() from then
// on, and its next step leads to the node that followed at that time; if that one is removed too,
// to the one that followed it then, and so on. In a vector, where values move from node to node
// when one is inserted or removed, it follows its value. Allocates nothing.

#include "qrv/core/cattrhash.h"

#include <cstddef>
#include <iterator>

class QRV_API cAttrCursor {
  public:
    cAttrCursor() noexcept = default;            // at the end, of no hash
    explicit cAttrCursor(hashref hash) noexcept; // at the first node; null has none
    cAttrCursor(cAttrCursor const &other) noexcept;
    cAttrCursor(cAttrCursor &&other) noexcept;
    cAttrCursor &operator=(cAttrCursor const &other);
    cAttrCursor &operator=(cAttrCursor &&other) noexcept(false); // destroys what was the last
    ~cAttrCursor(); // RUNS USER CODE, if it is the last owner of the hash

    // The node, which may be dead: without key and value. Null at the end, and when the value was
    // removed from a vector.
    cAttrNode *node() const noexcept { return passed_ ? nullptr : node_; }
    hashref const &hash() const noexcept { return hash_; }
    bool at_end() const noexcept { return node_ == nullptr; }
    bool removed() const noexcept { return node_ && (passed_ || node_->is_dead()); }

    // At the end it stays there. An end that a step has reached stays one, whatever is inserted.
    cAttrCursor &operator++() noexcept;
    // By node; all ends are equal.
    bool operator==(cAttrCursor const &other) const noexcept { return node_ == other.node_; }

  private:
    friend class cAttrHash;

    // The hash removes a node that somebody holds; it is in the ring still.
    static void leaves(cAttrNode const &node) noexcept;
    // Before the values after this position of a vector move to the node before theirs, and after a
    // node was added at the end, before those from the position on move to the next one.
    static void closes(cAttrHash const &vector, int position) noexcept;
    static void opens(cAttrHash const &vector, int position) noexcept;
    bool is_from(cAttrHash const &vector, int position) const noexcept;
    void stand_at(cAttrNode *node, cAttrNode *follower) noexcept;

    hashref hash_;
    cAttrNode *node_ = nullptr;     // held
    cAttrNode *follower_ = nullptr; // held; of a removed node: where the next step leads
    bool passed_ = false;           // the value was removed, and node_ has the one that followed
    // The list of cursors that have a node.
    cAttrCursor *after_ = nullptr;
    cAttrCursor **link_ = nullptr; // to this one; null: not in the list
};

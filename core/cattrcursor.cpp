#include "qrv/core/cattrcursor.h"

// All cursors that have a node are in one list of the process. The list is short, and it is
// searched only when a node is removed that has another holder.

namespace {
constinit cAttrCursor *cursors = nullptr;

void hold(cAttrNode const *node) noexcept {
    if (node) node->hold();
}

void unhold(cAttrNode const *node) noexcept {
    if (node) node->unhold();
}
} // namespace

cAttrCursor::cAttrCursor(hashref hash) noexcept : hash_(std::move(hash)) {
    if (hash_) stand_at(hash_->first(), nullptr);
}

cAttrCursor::cAttrCursor(cAttrCursor const &other) noexcept
    : hash_(other.hash_), passed_(other.passed_) {
    stand_at(other.node_, other.follower_);
}

cAttrCursor::cAttrCursor(cAttrCursor &&other) noexcept : cAttrCursor(other) {
    other.stand_at(nullptr, nullptr);
}

cAttrCursor &cAttrCursor::operator=(cAttrCursor const &other) {
    hashref const keep = hash_;
    hash_ = other.hash_;
    passed_ = other.passed_;
    stand_at(other.node_, other.follower_);
    return *this; // RE-ENTERS: keep dies here
}

cAttrCursor &cAttrCursor::operator=(cAttrCursor &&other) noexcept(false) {
    return *this = static_cast<cAttrCursor const &>(other);
}

cAttrCursor::~cAttrCursor() { stand_at(nullptr, nullptr); }

// Holds the new nodes before it releases the former ones: they may be the same.
void cAttrCursor::stand_at(cAttrNode *node, cAttrNode *follower) noexcept {
    hold(node);
    hold(follower);
    unhold(std::exchange(node_, node));
    unhold(std::exchange(follower_, follower));
    if ((node_ != nullptr) == (link_ != nullptr)) return;
    if (node_) {
        after_ = cursors;
        if (after_) after_->link_ = &after_;
        cursors = this;
        link_ = &cursors;
    } else {
        *link_ = after_;
        if (after_) after_->link_ = link_;
        link_ = nullptr;
    }
}

cAttrCursor &cAttrCursor::operator++() noexcept {
    if (!node_) return *this;
    bool const is_next = passed_ && !node_->is_dead();
    passed_ = false;
    if (!is_next) stand_at(node_->is_dead() ? follower_ : hash_->next(node_), nullptr);
    return *this;
}

void cAttrCursor::leaves(cAttrNode const &node) noexcept {
    for (cAttrCursor *cursor = cursors; cursor; cursor = cursor->after_)
        if (cursor->node_ == &node || cursor->follower_ == &node)
            cursor->stand_at(cursor->node_, cursor->hash_->next(&node));
}

// Is this cursor at `position` of the vector, or after it?
bool cAttrCursor::is_from(cAttrHash const &vector, int position) const noexcept {
    return hash_.get() == &vector && !node_->is_dead() && node_->key_as_index() >= position;
}

void cAttrCursor::closes(cAttrHash const &vector, int position) noexcept {
    if (!cursors || !vector.is_vector()) return;
    for (cAttrCursor *cursor = cursors; cursor; cursor = cursor->after_) {
        if (!cursor->is_from(vector, position)) continue;
        if (cursor->node_->key_as_index() == position)
            cursor->passed_ = true;
        else
            cursor->stand_at(vector.prev(cursor->node_), nullptr);
    }
}

void cAttrCursor::opens(cAttrHash const &vector, int position) noexcept {
    if (!cursors || !vector.is_vector()) return;
    for (cAttrCursor *cursor = cursors; cursor; cursor = cursor->after_)
        if (cursor->is_from(vector, cursor->passed_ ? position + 1 : position))
            cursor->stand_at(vector.next(cursor->node_), nullptr);
}

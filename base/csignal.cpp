// Links between signals and slots, and the queue of nodes that wait for their memory to be freed.
//
// Rules of a ring (broken_rule checks all of them, L7 only when deep):
//   L1  each node n: n.next->prev is n, and the ring returns to its head
//   L2  each node's base is the base of the ring
//   L3  the head carries no link and no flag, is not queued, and has a block token with an owner
//   L4  a queued node has no partner
//   L5  a node that is not queued has a partner, and is its partner's partner
//   L6  of a node and its partner exactly one is the target, both have the same number of uses, and
//       the target is not exclusive
//   L7  (deep) L1 to L6 hold in the partners' rings, and Q1 and Q2 hold
// Rules of the queue:
//   Q1  it ends with the end mark, contains no node twice, and its nodes have no partner
//   Q2  it is empty while no deletion lock is held
// A node without partner that is not queued exists only inside remove(), which runs no user code.
//
// Known limit: `blocks` and `uses` have 16 bits and wrap; nothing depends on exact values.

#include "qrv/base/csignal.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <mutex>
#include <new>
#include <unordered_set>

namespace {

// Guards only the freeing of queued nodes. Its destructor does nothing, so it can be used until the
// process ends: static objects of programs may disconnect after those of the library are destroyed.
constinit std::mutex connection_lock;
static_assert(std::is_trivially_destructible_v<std::mutex>);

cConnection *node_of(std::uintptr_t link) { return reinterpret_cast<cConnection *>(link); }

#ifdef QRV_CHECKS
void stop_if_broken(std::string const &rule) {
    if (rule.empty()) return;
    std::fprintf(stderr, "qrv: broken rule of connections: %s\n", rule.c_str());
    std::abort();
}
#endif

} // namespace

constinit std::uintptr_t cConnection::queue_head_ = end_mark;
constinit std::int32_t cConnection::delete_locks_ = 0;

void cConnection::link(cConnection *before) noexcept {
    if (!before || before == this || before == next_) return;
    if (islinked()) unlink();
    prev_ = before->prev_;
    next_ = before;
    prev_->next_ = this;
    before->prev_ = this;
    base_ = before->base_;
}

void cConnection::unlink() noexcept {
    next_->prev_ = prev_;
    prev_->next_ = next_;
    prev_ = next_ = this;
    base_ = nullptr;
}

void cConnection::connect(cConnection *other, bool exclusive) noexcept {
    partner_ = other;
    if (other) {
        other->partner_ = this;
        other->flags_ |= target_bit;
    }
    if (exclusive) make_exclusive();
}

// Blocks all nodes that are in the ring now, except this one. Later connections are not blocked.
void cConnection::make_exclusive() noexcept {
    flags_ |= exclusive_bit;
    if (!base_) return;
    for (cConnection *node = base_->begin(); node != base_->end(); node = node->next_)
        ++node->blocks_;
    --blocks_;
}

// DELIBERATE: counts down all nodes that are in the ring now, so a connection made after the
// exclusive one gets -1.   Pinned: a_connection_made_after_an_exclusive_one_is_left_at_minus_1
void cConnection::end_exclusive() noexcept {
    if (!base_) return;
    for (cConnection *node = base_->begin(); node != base_->end(); node = node->next_)
        --node->blocks_;
}

void cConnection::cut() noexcept {
    constexpr auto no_target = static_cast<std::uint16_t>(~target_bit);
    if (partner_) {
        partner_->flags_ &= no_target;
        partner_->partner_ = nullptr;
    }
    flags_ &= no_target;
    partner_ = nullptr;
    if (flags_ & exclusive_bit) end_exclusive();
}

// Cuts and queues both ends, once.
void cConnection::remove() noexcept {
    if (!isdeleted()) {
        cConnection *const other = partner_;
        cut();
        if (other) other->remove(); // no recursion back: `other` has no partner any more
        queue();
    }
    do_delete();
}

void cConnection::queue() noexcept {
    if (isdeleted()) return;
    delete_next_ = queue_head_;
    queue_head_ = reinterpret_cast<std::uintptr_t>(this);
}

// Runs no user code, since it holds the lock: it only frees memory.
void cConnection::purge() noexcept {
    std::lock_guard const hold(connection_lock);
    while (delete_locks_ == 0 && queue_head_ != end_mark) {
        cConnection *const node = node_of(queue_head_);
        queue_head_ = node->delete_next_;
        node->unlink();
        ::operator delete(node);
    }
#ifdef QRV_CHECKS
    if (delete_locks_ == 0) stop_if_broken(broken_queue_rule());
#endif
}

int cConnection::lock_count() { return delete_locks_; }

std::size_t cConnection::queue_length() {
    std::size_t length = 0;
    for (auto link = queue_head_; link != end_mark; link = node_of(link)->delete_next_) ++length;
    return length;
}

std::string cConnection::broken_queue_rule() {
    std::unordered_set<std::uintptr_t> seen;
    for (auto link = queue_head_; link != end_mark; link = node_of(link)->delete_next_) {
        if (link == 0) return "Q1 a queued node reads as alive";
        if (!seen.insert(link).second) return "Q1 a node is queued twice";
        if (node_of(link)->partner_) return "Q1 a queued node has a partner";
    }
    if (delete_locks_ == 0 && !seen.empty()) return "Q2 queued nodes and no lock";
    return {};
}

std::string cConnection::broken_link(cConnection const &node, char const *where) {
    auto const broken = [where](char const *rule) { return std::string(rule) + where; };
    if (node.isdeleted()) return node.partner_ ? broken("L4 queued with a partner") : std::string();
    cConnection const *const other = node.partner_;
    if (!other || other->partner_ != &node) return broken("L5 not its partner's partner");
    if (node.istarget() == other->istarget()) return broken("L6 not one target");
    if (node.uses_ != other->uses_) return broken("L6 uses differ");
    if (node.istarget() && (node.flags_ & exclusive_bit)) return broken("L6 exclusive target");
    return {};
}

std::string cSSBase::broken_ring() const {
    if (!start_) return {};
    if (start_->partner_ || start_->flags_ || start_->isdeleted()) return "L3 the head has a link";
    if (!start_->block_token_ || start_->block_token_->refs() < 1) return "L3 no token";
    cConnection const *node = start_;
    do {
        if (node->next_->prev_ != node) return "L1 next and prev disagree";
        if (node->base_ != this) return "L2 wrong base";
        if (node != start_)
            if (auto rule = cConnection::broken_link(*node, ""); !rule.empty()) return rule;
        node = node->next_;
    } while (node != start_); // terminates: next and prev agree, so the walk returns to start_
    return {};
}

std::string cSSBase::broken_rule(bool deep) const {
    auto rule = broken_ring();
    if (!rule.empty() || !deep || !start_) return rule;
    for (cConnection const *node = begin(); node != end(); node = node->next_) {
        cSSBase const *const other = node->other_base();
        if (!other) continue;
        rule = other->broken_ring();
        if (!rule.empty()) return "L7 at a partner: " + rule;
    }
    rule = cConnection::broken_queue_rule();
    return rule.empty() ? rule : "L7 in the queue: " + rule;
}

void cSSBase::check() const {
#ifdef QRV_CHECKS
    stop_if_broken(broken_rule(false));
#endif
}

cSSBase::StartConnection::StartConnection(cSSBase *base)
    : block_token_(cRef<cShared>::adopt(new cShared)) {
    base_ = base;
}

cSSBase::StartConnection &
cSSBase::StartConnection::operator=(StartConnection const &other) noexcept {
    block_token_ = other.block_token_;
    blockoncall_ = other.blockoncall_;
    return *this;
}

cSSBase::~cSSBase() {
    if (!start_) return;
    cConnection::LockDelete no_purge;
    cSSBase::disconnect();
    // A walk may be at one of these nodes and continue to our head; it must not find us there.
    for (cConnection *node = start_->next_; node != start_; node = node->next_)
        node->base_ = nullptr;
    start_->base_ = nullptr;
    start_->block_token_ = nullptr;
    start_->queue();
    start_ = nullptr;
}

// A ring is mutable even if its base is const; hence the const_cast.
void cSSBase::createstart() const {
    if (!start_) start_ = ::new StartConnection(const_cast<cSSBase *>(this));
}

// A link has a node in both rings, so the end of the shorter ring shows that the two are not
// linked.
cConnection *cSSBase::find(cSSBase const &other) const {
    cConnection *mine = begin(), *theirs = other.begin();
    for (; mine != end() && theirs != other.end(); mine = mine->next_, theirs = theirs->next_) {
        if (mine->other_base() == &other) return mine;
        if (theirs->other_base() == this) return theirs->partner_;
    }
    return nullptr;
}

bool cSSBase::isconnected() const {
    for (cConnection const *node = begin(); node != end(); node = node->next_)
        if (node->isconnected()) return true;
    return false;
}

// The position in this ring for a new node: before `node` if that is in this ring, else at the end.
cConnection *cSSBase::own(cConnection *node) const {
    return node && node->base_ == this ? node : start_;
}

cConnection *cSSBase::connect(cSSBase const &other, bool exclusive, cConnection *mine,
                              cConnection *theirs) const {
    cConnection *node = find(other);
    if (!node) {
        createstart();
        other.createstart();
        struct FreeNode {
            void operator()(cConnection *memory) const noexcept { ::operator delete(memory); }
        };
        std::unique_ptr<cConnection, FreeNode> far(::new cConnection);
        node = ::new cConnection; // allocates both before linking either
        far->link(other.own(theirs));
        node->link(own(mine));
        node->flags_ =
            static_cast<std::uint16_t>(other.arguments() << cConnection::arguments_shift);
        node->connect(far.release(), exclusive);
    }
    ++node->uses_;
    ++node->partner_->uses_;
    check();
    other.check();
    return node;
}

void cSSBase::disconnect(cSSBase const &other, bool force) const {
    cConnection *const node = find(other);
    if (!node) return;
    // If the first count reaches 0, the second one does not matter: both nodes are removed.
    if (!force && --node->uses_ > 0 && --node->partner_->uses_ > 0) return;
    node->remove();
    check();
    other.check();
}

void cSSBase::disconnect() const {
    if (!start_) return;
    {
        // A link to ourselves has both ends in this ring, so `next` may be removed with `node`.
        cConnection::LockDelete no_purge;
        for (cConnection *node = begin(), *next = nullptr; node != end(); node = next) {
            next = node->next_;
            node->remove();
        }
    }
    check();
}

void cSSBase::rotate(cConnection *head) noexcept {
    cConnection *const first = head->next_;
    if (first == head || first->next_ == head) return;
    first->link(head);
    head->base_->check();
}

void cSSBase::rotateconnections() const {
    if (start_) rotate(start_);
}

cRef<cShared> cSSBase::block() const {
    createstart();
    return start_->block_token_;
}

void cSSBase::blockoncall(bool on) {
    createstart();
    start_->blockoncall_ = on;
}

cSSBase0::~cSSBase0() = default;

cSignal::cSignal(cSSBase0 const &target) { connect(target); }

cSignal::~cSignal() { disconnect(); }

void cSignal::operator()() const {
    fire([](cSSBase const &target, int) { static_cast<cSSBase0 const &>(target)(); });
}

void cSignal::oneshot() const {
    fire_first([](cSSBase const &target, int) { static_cast<cSSBase0 const &>(target)(); });
}

cDeleteSignal::~cDeleteSignal() {
    try {
        cSignal::operator()();
    } catch (...) { // a destructor cannot report it
    }
    disconnect();
}

cSigInfo::~cSigInfo() { disconnect(); }

void cSigInfo::fire_format(char const *format, std::va_list args) const {
    static constinit char text[1024] = {}; // all signals share it; valid only during this call
    if (!format || !isconnected()) return;
    char fresh[sizeof text] = {}; // not `text` itself, since an argument may point into it
    std::va_list list;
    va_copy(list, args);
    std::vsnprintf(fresh, sizeof fresh, format, list);
    va_end(list);
    std::memcpy(text, fresh, sizeof text);
    cSignal1<char const *>::operator()(text);
}

template class cSignal1<bool &>;
template class cSignal1<char const *>;
template class cSignal1<cObj &>;
template class cSignal1<cErr &>;
template class cSignal2<int, int>;
template class cFunctionSlot<void (*)()>;
template class cFunctionSlot1<char const *, void (*)(char const *)>;

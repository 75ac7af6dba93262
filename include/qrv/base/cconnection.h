#pragma once
// Connections between signals and slots, and the walk along them by which a signal calls its
// targets (qrv/base/csignal.h).
//
// Signals and slots have one base class, cSSBase. A link joins two of them, a sender and a
// receiver. It consists of two heap nodes (cConnection), one in the ring of each partner, so that
// either partner finds and cuts the link without searching the other's ring.
//
//   node:  connected --cut()--> cut --queue()--> queued --purge()--> freed
//
// While any emission runs anywhere in the process, no node is freed: a queued node stays linked, so
// that a walk that is at this node can continue. This makes it safe to disconnect anything, and to
// destroy any signal or slot, during a call that a signal makes.
//
// Limits: a slot does not own its object, so the slot must be destroyed before or with the object.
// An exception of a slot reaches the caller of the signal, and the remaining targets are not
// called.

#include "qrv/base/cref.h"
#include "qrv/ccomp.h"
#include "qrv/qrvdefs.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <type_traits>

// One end of a link. Its ring owns it; everything else borrows it. A pointer to it is valid until
// the link is cut or, while a LockDelete exists, until the last LockDelete is destroyed.
class QRV_API cConnection {
  public:
    class LockDelete;

    // The neighbours in the ring, never null: a node that is in no ring points to itself.
    cConnection *next() const { return next_; }
    cConnection *prev() const { return prev_; }

    // A node is connected if it has a partner, linked if it is in a ring, and deleted if it is
    // queued.
    bool isconnected() const { return partner_ != nullptr; }
    bool islinked() const { return next_ != this; }
    bool isdeleted() const { return delete_next_ != 0; }
    // True at the receiver. A call of a signal follows only its links as a sender, so it skips
    // these nodes.
    bool istarget() const { return (flags_ & target_bit) != 0; }
    // True for the head of a ring, where walks end, and for a node that is in no ring.
    bool isend() const;
    // Blocked at either end, or cut.
    bool isblocked() const { return blocks_ > 0 || !partner_ || partner_->blocks_ > 0; }
    // In a ring and not queued.
    explicit operator bool() const { return !isdeleted() && islinked(); }
    // The base that owns the ring; null if the node is unlinked or that base is destroyed.
    cSSBase *my_base() const { return base_; }
    // The base at the other end; null if the link is cut.
    cSSBase *other_base() const { return partner_ ? partner_->base_ : nullptr; }

    // The same for a pointer that may be null: the result is then false or null.
    static bool valid(cConnection const *node) { return node && bool(*node); }
    static cSSBase *my_base(cConnection const *node) { return node ? node->my_base() : nullptr; }
    static cSSBase *other_base(cConnection const *node) {
        return node ? node->other_base() : nullptr;
    }

    // Adds one reason to block this end. The counters have 16 bits and wrap.
    void block() const { ++blocks_; }
    // Removes one reason, or all with `all`. The count may become negative; then as many calls of
    // block() are needed to reach zero again.
    void unblock(bool all = false) const {
        --blocks_;
        if (blocks_ > 0 && all) blocks_ = 0;
    }
    int blocks() const { return blocks_; }
    // How many times the link was connected.
    int uses() const { return uses_; }

    // For tests: the number of LockDelete objects, and of nodes that wait until the last one is
    // destroyed.
    static int lock_count();
    static std::size_t queue_length();
    // The first violated rule of the deletion queue, or an empty string (rules: base/csignal.cpp).
    static std::string broken_queue_rule();

    static void operator delete(void *) = delete; // only purge() frees nodes

  protected:
    cConnection() noexcept : prev_(this), next_(this) {}
    // Inserts the node before `before`, if that is not null.
    explicit cConnection(cConnection *before) noexcept : cConnection() { link(before); }
    cConnection(cConnection const &) noexcept : cConnection() {}
    cConnection &operator=(cConnection const &) noexcept { return *this; }
    ~cConnection() = default; // trivial on purpose: a queued node is still read

    // Moves the node before `before`, into its ring. No effect for null and for the node itself.
    void link(cConnection *before) noexcept;
    static void link(cConnection *node, cConnection *before) noexcept {
        if (node) node->link(before);
    }
    void unlink() noexcept;
    // Makes this the sending end of a link to `other`. With `exclusive`, blocks all other nodes
    // that are in the ring at this time.
    void connect(cConnection *other, bool exclusive) noexcept;
    // Cuts the link at both ends; queues nothing.
    void disconnect() noexcept { cut(); }

    static void lock_delete() noexcept { ++delete_locks_; }
    static void unlock_delete() noexcept {
        delete_locks_ = delete_locks_ > 0 ? delete_locks_ - 1 : 0;
        do_delete();
    }
    // Frees the queued nodes, unless a LockDelete exists.
    static void do_delete() noexcept {
        if (delete_locks_ == 0 && queue_head_ != end_mark) purge();
    }

  private:
    friend class cSSBase;
    friend struct cRingProbe; // the tests of the rule checker

    static constexpr std::uint16_t target_bit = 1;
    static constexpr std::uint16_t exclusive_bit = 2;
    static constexpr int arguments_shift = 2;     // the bits from here on
    static constexpr std::uintptr_t end_mark = 1; // not 0, which means: not queued

    // The nodes that wait to be freed, linked by delete_next_.
    static std::uintptr_t queue_head_;
    static std::int32_t delete_locks_;

    void cut() noexcept;
    void queue() noexcept;
    void remove() noexcept;
    void make_exclusive() noexcept;
    void end_exclusive() noexcept;
    // Whether an emission calls the partner. False for a cut or queued node, which has none.
    bool carries() const {
        return partner_ && !istarget() && blocks_ <= 0 && partner_->blocks_ <= 0;
    }
    // How many arguments the receiver accepts; set when the link is created.
    int arguments() const { return flags_ >> arguments_shift; }
    static void purge() noexcept;
    static std::string broken_link(cConnection const &node, char const *where);

    cSSBase *base_ = nullptr;
    cConnection *partner_ = nullptr;
    cConnection *prev_;
    cConnection *next_;
    std::uintptr_t delete_next_ = 0; // 0: not queued; else the next queued node, or the end mark
    mutable std::int16_t blocks_ = 0;
    std::int16_t uses_ = 0;
    std::uint16_t flags_ = 0;
};

static_assert(!std::is_polymorphic_v<cConnection>);

// While one exists, no node is freed. Code that walks a ring with begin(), next() and isend() and
// calls user code during the walk needs one.
class QRV_API cConnection::LockDelete {
  public:
    LockDelete() noexcept { lock_delete(); }
    LockDelete(LockDelete const &) = delete;
    LockDelete &operator=(LockDelete const &) = delete;
    ~LockDelete() { unlock_delete(); }
};

// The common base of signals and slots: one pointer, null until the first connection or block. A
// copy is a new base without connections; assignment has no effect.
class QRV_API cSSBase {
  public:
    class BlockOnCall;

    virtual ~cSSBase();

    // The ring, in the order in which targets are called. Both are null before the first connection
    // or block. To walk it:
    //     for (auto c = b.begin(); c != b.end(); c = c->next())
    cConnection *begin() const;
    cConnection *end() const;
    // This base's node of the link to `other`, in either direction, or null. O(connections) of the
    // base that has fewer.
    cConnection *find(cSSBase const &other) const;
    // Whether there is any link, or one to `other`.   O(connections)
    bool isconnected() const;
    bool isconnected(cSSBase const &other) const { return find(other) != nullptr; }
    // Cuts every link in both directions, regardless of its count.
    void disconnect() const;

    // Blocks the base, both its calls and calls to it, until the result and all its copies are
    // destroyed. Allocates at the first use of a base.
    cRef<cShared> block() const;
    bool isblocked() const;
    // With the flag set, the base is blocked during each of its calls, so that recursive calls of
    // it have no effect.
    bool blockoncall() const;
    void blockoncall(bool on);

    // The first violated rule of this ring, or an empty string (rules: base/csignal.cpp). `deep`
    // also checks the partners' rings and the deletion queue.
    std::string broken_rule(bool deep) const;

  protected:
    class StartConnection;

    constexpr cSSBase() noexcept {}
    cSSBase(cSSBase const &) noexcept {}
    cSSBase &operator=(cSSBase const &) noexcept { return *this; }

    void createstart() const;
    // Links this base as the sender to `other` as the receiver and returns this base's end. If a
    // link exists in either direction, only increases its count. The new ends are inserted before
    // `mine` and `theirs`, or at the end of the ring if the node is null or in another ring.
    // Allocates; an std::bad_alloc leaves everything unchanged. O(connections) of the base that has
    // fewer.
    cConnection *connect(cSSBase const &other, bool exclusive, cConnection *mine,
                         cConnection *theirs) const;
    // Decreases the count of the link to `other` and cuts it at 0; with `force` cuts it at once.
    void disconnect(cSSBase const &other, bool force) const;
    // Moves the first connection to the end.
    void rotateconnections() const;

    // True if this base was never connected or blocked.
    bool untouched() const { return !start_; }
    // True if it is not blocked, and a call does not block it.
    bool plain_call() const;
    // Calls `call` with each target and the number of arguments that the target accepts. The
    // numbers in the body are the steps on which deletion during a call depends.
    template <class Call> void fire(Call const &call) const;
    // The same for the first connection only, which it then moves to the end.
    template <class Call> void fire_first(Call const &call) const;

  private:
    friend class cConnection;
    friend struct cRingProbe;

    static cSSBase const *target_of(cConnection const *node) {
        return node->carries() ? node->partner_->base_ : nullptr;
    }
    static void rotate(cConnection *head) noexcept;
    // How many arguments a call of this base accepts. connect() stores the result for all
    // emissions.
    virtual int arguments() const { return 0; }
    cConnection *own(cConnection *node) const;
    std::string broken_ring() const;
    void check() const;

    mutable StartConnection *start_ = nullptr;
};

// The head of a ring: a node that never belongs to a link.
class QRV_API cSSBase::StartConnection : public cConnection {
  public:
    // Borrows the base.
    explicit StartConnection(cSSBase *base);
    StartConnection(StartConnection const &other) noexcept
        : cConnection(other), block_token_(other.block_token_), blockoncall_(other.blockoncall_) {}
    StartConnection &operator=(StartConnection const &other) noexcept;
    ~StartConnection() = default;

  private:
    friend class cSSBase;
    friend struct cRingProbe;

    // Its first count belongs to this node; each further one blocks the base. Reset before the node
    // is queued, since no destructor runs when the node is freed.
    cRef<cShared> block_token_;
    bool blockoncall_ = false;
};

// Blocks a base whose flag `blockoncall` is set, until this guard is destroyed. No effect for other
// bases and for null.
class QRV_API cSSBase::BlockOnCall {
  public:
    // Borrows the base. Allocates nothing.
    explicit BlockOnCall(cSSBase const *base) {
        if (base && base->blockoncall()) token_ = base->block();
    }
    BlockOnCall(BlockOnCall const &) = default;
    BlockOnCall &operator=(BlockOnCall const &) = default;
    ~BlockOnCall() = default;

  private:
    cRef<cShared> token_;
};

inline bool cConnection::isend() const { return !base_ || base_->start_ == this; }

inline cConnection *cSSBase::begin() const { return start_ ? start_->next() : nullptr; }

inline cConnection *cSSBase::end() const { return start_; }

inline bool cSSBase::isblocked() const { return start_ && start_->block_token_->refs() > 1; }

inline bool cSSBase::blockoncall() const { return start_ && start_->blockoncall_; }

inline bool cSSBase::plain_call() const {
    return !start_ || (!start_->blockoncall_ && start_->block_token_->refs() == 1);
}

template <class Call> void cSSBase::fire(Call const &call) const {
    if (untouched() || isblocked()) return; // 1
    cConnection::LockDelete no_purge;       // 2  outlives 3
    BlockOnCall self_block(this);           // 3
    cConnection const *const head = start_; // 4  last look at *this: a target may destroy us
    cConnection const *node = head->next_;
    do {
        if (cSSBase const *target = target_of(node)) // 5
            call(*target, node->arguments());        // 6  RE-ENTERS
        node = node->next_;                          // 7  after the call, not before it
    } while (node != head);
} // 8

template <class Call> void cSSBase::fire_first(Call const &call) const {
    if (untouched() || isblocked()) return;
    cConnection::LockDelete no_purge;
    BlockOnCall self_block(this);
    cConnection *const head = start_; // last look at *this
    cConnection const *const first = head->next_;
    if (cSSBase const *target = target_of(first)) call(*target, first->arguments()); // RE-ENTERS
    if (!head->isdeleted()) rotate(head);
}

#pragma once
// Connections: who is connected to whom, and the walk along the connections that every signal makes
// (qrv/base/csignal.h).
//
// A signal and a slot are the same kind of thing, a cSSBase. A link joins two of them with a
// direction and is two heap nodes (cConnection), one in the ring of each partner, so that either
// partner finds and cuts it without searching the other.
//
//   node:  connected --cut()--> cut --queue()--> queued --purge()--> gone
//
// A node's memory is never freed while any emission runs anywhere in the process: a queued node
// stays linked, so that a walk standing on it can go on. That makes it safe to disconnect anything,
// and to destroy any signal or slot, from inside a call that a signal is making.
//
// Limits: a slot does not own its object: destroy the slot first or together with it. An exception
// of a slot reaches the caller of the signal, and the remaining targets are not called.

#include "qrv/base/cref.h"
#include "qrv/ccomp.h"
#include "qrv/qrvdefs.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <type_traits>

// One end of a link. Borrowed by everybody but the two rings: a pointer to it is good until the
// link is cut, or, while a LockDelete lives, until that ends.
class QRV_API cConnection {
  public:
    class LockDelete;

    cConnection *next() const { return next_; }
    cConnection *prev() const { return prev_; }

    bool isconnected() const { return partner_ != nullptr; }
    bool islinked() const { return next_ != this; }
    bool isdeleted() const { return delete_next_ != 0; }
    // The receiving end: its own base's emission does not walk into it.
    bool istarget() const { return (flags_ & target_bit) != 0; }
    // True for the head of a ring, where walks end, and for a node that is in no ring.
    bool isend() const;
    // Blocked at either end, or cut.
    bool isblocked() const { return blocks_ > 0 || !partner_ || partner_->blocks_ > 0; }
    explicit operator bool() const { return !isdeleted() && islinked(); }
    // The base in whose ring the node stands; null once it is unlinked or the base is gone.
    cSSBase *my_base() const { return base_; }
    // The base at the other end; null when the link is cut.
    cSSBase *other_base() const { return partner_ ? partner_->base_ : nullptr; }

    // The same for a pointer that may be null: false and null then.
    static bool valid(cConnection const *node) { return node && bool(*node); }
    static cSSBase *my_base(cConnection const *node) { return node ? node->my_base() : nullptr; }
    static cSSBase *other_base(cConnection const *node) {
        return node ? node->other_base() : nullptr;
    }

    // One more reason for this end to be blocked. The counters have 16 bits and wrap.
    void block() const { ++blocks_; }
    // One reason less; with `all` none is left. May fall below 0, which takes as many block() to
    // mend.
    void unblock(bool all = false) const {
        --blocks_;
        if (blocks_ > 0 && all) blocks_ = 0;
    }
    int blocks() const { return blocks_; }
    // How many times the link was connected.
    int uses() const { return uses_; }

    // For tests: the running LockDelete, and the nodes that wait for the last of them to end.
    static int lock_count();
    static std::size_t queue_length();
    // The first broken rule of the deletion queue, or an empty text (the rules: csignal.cpp).
    static std::string broken_queue_rule();

    static void operator delete(void *) = delete; // nodes die only in purge()

  protected:
    cConnection() noexcept : prev_(this), next_(this) {}
    // Stands just ahead of `before` at once, if that is not null.
    explicit cConnection(cConnection *before) noexcept : cConnection() { link(before); }
    cConnection(cConnection const &) noexcept : cConnection() {}
    cConnection &operator=(cConnection const &) noexcept { return *this; }
    ~cConnection() = default; // trivial on purpose: a queued node is still read

    // Moves the node to just ahead of `before` and into its ring; null and itself change nothing.
    void link(cConnection *before) noexcept;
    static void link(cConnection *node, cConnection *before) noexcept {
        if (node) node->link(before);
    }
    void unlink() noexcept;
    // Makes this the sending end of a link to `other`, and with `exclusive` the only one not
    // blocked among those that stand in the ring now.
    void connect(cConnection *other, bool exclusive) noexcept;
    // Cuts the link at both ends; nothing is queued.
    void disconnect() noexcept { cut(); }

    static void lock_delete() noexcept { ++delete_locks_; }
    static void unlock_delete() noexcept {
        delete_locks_ = delete_locks_ > 0 ? delete_locks_ - 1 : 0;
        do_delete();
    }
    // Frees the queued nodes, unless a LockDelete lives.
    static void do_delete() noexcept {
        if (delete_locks_ == 0 && queue_head_ != end_mark) purge();
    }

  private:
    friend class cSSBase;
    friend struct cRingProbe; // the tests of the rule checker

    static constexpr std::uint16_t target_bit = 1;
    static constexpr std::uint16_t exclusive_bit = 2;
    static constexpr int arguments_shift = 2;     // the bits from here on
    static constexpr std::uintptr_t end_mark = 1; // not 0: the last queued node reads as queued too

    // Of the nodes that wait for their memory to be freed, linked by delete_next_.
    static std::uintptr_t queue_head_;
    static std::int32_t delete_locks_;

    void cut() noexcept;
    void queue() noexcept;
    void remove() noexcept;
    void make_exclusive() noexcept;
    void end_exclusive() noexcept;
    // A cut or queued node has no partner.
    bool carries() const {
        return partner_ && !istarget() && blocks_ <= 0 && partner_->blocks_ <= 0;
    }
    // How many arguments the receiving end takes; known since the link was made.
    int arguments() const { return flags_ >> arguments_shift; }
    static void purge() noexcept;
    static std::string broken_link(cConnection const &node, char const *where);

    cSSBase *base_ = nullptr;
    cConnection *partner_ = nullptr;
    cConnection *prev_;
    cConnection *next_;
    std::uintptr_t delete_next_ = 0; // 0: alive; else the next queued node, or the end mark 1
    mutable std::int16_t blocks_ = 0;
    std::int16_t uses_ = 0;
    std::uint16_t flags_ = 0;
};

static_assert(!std::is_polymorphic_v<cConnection>);

// While one of these lives, no node is freed. Whoever walks a ring with begin(), next() and isend()
// and calls user code meanwhile holds one.
class QRV_API cConnection::LockDelete {
  public:
    LockDelete() noexcept { lock_delete(); }
    LockDelete(LockDelete const &) = delete;
    LockDelete &operator=(LockDelete const &) = delete;
    ~LockDelete() { unlock_delete(); }
};

// The common base of signals and slots: one pointer, null until the first connection or block.
// A copy is a fresh base without connections; assignment changes nothing.
class QRV_API cSSBase {
  public:
    class BlockOnCall;

    virtual ~cSSBase();

    // The ring, in the order in which targets are reached; both null before the first connection or
    // block. Walk:
    // for (auto c = b.begin(); c != b.end(); c = c->next())
    cConnection *begin() const;
    cConnection *end() const;
    // The node that links to `other`, in either direction, or null. O(connections) of the base that
    // has fewer.
    cConnection *find(cSSBase const &other) const;
    bool isconnected() const;
    bool isconnected(cSSBase const &other) const { return find(other) != nullptr; }
    // Cuts every link, of both directions, however often it was connected.
    void disconnect() const;

    // Blocks the base as a whole, its calls and the calls into it, for as long as anybody holds the
    // result or a copy of it.
    cRef<cShared> block() const;
    bool isblocked() const;
    // With the flag set, the base is blocked for the length of each of its calls, so that a call of
    // it from inside does nothing.
    bool blockoncall() const;
    void blockoncall(bool on);

    // The first broken rule of this ring, or an empty text (the rules: csignal.cpp). `deep` also
    // looks at the rings of the partners and at the deletion queue.
    std::string broken_rule(bool deep) const;

  protected:
    class StartConnection;

    constexpr cSSBase() noexcept {}
    cSSBase(cSSBase const &) noexcept {}
    cSSBase &operator=(cSSBase const &) noexcept { return *this; }

    void createstart() const;
    // Links this (sending) to `other` (receiving) and returns this base's end. A pair that is
    // linked already, in whatever direction, is only counted once more. The new ends stand ahead of
    // `mine` and `theirs`; a null node, or one of another ring, means the end of the ring. Needs
    // memory: an allocation failure goes through and changes nothing. O(connections) of the base
    // that has fewer.
    cConnection *connect(cSSBase const &other, bool exclusive, cConnection *mine,
                         cConnection *theirs) const;
    // Counts the first link to `other` down and cuts it at 0; with `force` at once.
    void disconnect(cSSBase const &other, bool force) const;
    // The first connection becomes the last.
    void rotateconnections() const;

    // Nobody has ever connected or blocked this base.
    bool untouched() const { return !start_; }
    // Neither blocked nor to be blocked while it is called.
    bool plain_call() const;
    // Calls `call` with each target and the number of arguments that it takes. The numbers are
    // those of the protocol that the rules on deletion during a call rest on.
    template <class Call> void fire(Call const &call) const;
    // The same for the first connection only, which then becomes the last.
    template <class Call> void fire_first(Call const &call) const;

  private:
    friend class cConnection;
    friend struct cRingProbe;

    static cSSBase const *target_of(cConnection const *node) {
        return node->carries() ? node->partner_->base_ : nullptr;
    }
    static void rotate(cConnection *head) noexcept;
    // How many arguments a call of this takes. connect() asks once, for all emissions.
    virtual int arguments() const { return 0; }
    cConnection *own(cConnection *node) const;
    std::string broken_ring() const;
    void check() const;

    mutable StartConnection *start_ = nullptr;
};

// The head of a ring: a node that never carries a link.
class QRV_API cSSBase::StartConnection : public cConnection {
  public:
    explicit StartConnection(cSSBase *base);
    StartConnection(StartConnection const &other) noexcept
        : cConnection(other), block_token_(other.block_token_), blockoncall_(other.blockoncall_) {}
    StartConnection &operator=(StartConnection const &other) noexcept;
    ~StartConnection() = default;

  private:
    friend class cSSBase;
    friend struct cRingProbe;

    // Its first count is this one's; every further one blocks the base. Reset before the node is
    // queued, since no destructor runs at the purge.
    cRef<cShared> block_token_;
    bool blockoncall_ = false;
};

// Blocks a base with `blockoncall` set for as long as it lives; holds nothing for other bases or
// null.
class QRV_API cSSBase::BlockOnCall {
  public:
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

#pragma once
// cIterObj, a position in the ring of a hash: an object of type "iterator", which can be an
// attribute value, and also the cursor that cObj::begin() and cObj::end() return by value.
//
// It shares the hash and keeps the memory of its node, but not the node in the ring: when the node
// is deleted, the iterator is invalid at once (pos() is -1, the value cat::bad(), the key null),
// and update() makes it null. A null iterator has no position. The end position is the ring's
// anchor.
//
// An iterator that follows a source runs update() whenever the source reports a change
// (cObj::changed). The connection is a slot among the iterator's own members, "updatefromobj": it
// ends when that member is removed, or the iterator or the source is destroyed.

#include "qrv/core/cattrhash.h"
#include "qrv/core/cobj.h"

class QRV_API cIterObj : public cObj {
  public:
    using link = cNode<cAttrNode>;

    cIterObj();
    // Shares node and hash of `other`; with `rewind` at the first node.
    cIterObj(cIterObj const &other, bool rewind = false);
    explicit cIterObj(hashref const &hash); // shares; at the first node; null if `hash` is
    // Node and hash of source->begin(); null for a null source. With `follow`, the source gets a
    // signal "changed" if it has none; it is not kept alive. RUNS USER CODE
    explicit cIterObj(cObj *source, bool follow = false);
    ~cIterObj() override;

    cIterObj &operator=(cIterObj const &other); // shares node and hash
    cIterObj &operator=(cObj const &other);     // assign. RUNS USER CODE
    bool operator==(cIterObj const &other) const noexcept { return link_ == other.link_; }
    bool operator!=(cIterObj const &other) const noexcept { return link_ != other.link_; }
    using cObj::operator==;
    using cObj::operator!=;

    operator bool() const noexcept { return valid(); }
    // Deleted, since they would use the bool. The distance of two iterators is that of their pos().
    template <class T> void operator+(T const &) const = delete;
    template <class T> void operator-(T const &) const = delete;
    template <class T> void operator<(T const &) const = delete;
    template <class T> void operator>(T const &) const = delete;
    template <class T> void operator<=(T const &) const = delete;
    template <class T> void operator>=(T const &) const = delete;
    template <class T> void operator<=>(T const &) const = delete;
    template <cNumber T> friend void operator+(T, cIterObj const &) = delete;
    template <cNumber T> friend void operator-(T, cIterObj const &) = delete;
    template <cNumber T> friend void operator<(T, cIterObj const &) = delete;
    template <cNumber T> friend void operator>(T, cIterObj const &) = delete;
    template <cNumber T> friend void operator<=(T, cIterObj const &) = delete;
    template <cNumber T> friend void operator>=(T, cIterObj const &) = delete;
    bool valid() const noexcept;
    static bool valid(cIterObj const *it) noexcept { return it && it->valid(); }

    // Borrowed; null for a null iterator. At the end position, the node must not be dereferenced.
    cAttrNode *node() const noexcept;
    cAttrHash *hash() const noexcept { return hash_.get(); }
    hashref const &hash_ref() const noexcept { return hash_; }
    objref const &key() const;             // null if not valid; cAttrNode::key
    objref const &valref() const noexcept; // cat::bad() if not valid
    cObj &value() const noexcept;
    cObj &operator*() const noexcept { return value(); }
    cObj *operator->() const noexcept { return &value(); }
    bool valid_value() const noexcept; // valid, and the value is neither null nor void
    std::string key_as_string() const; // empty if not valid; cAttrNode::key_as_string
    int key_as_index() const noexcept; // the lowest int if not valid; cAttrNode::key_as_index

    // One link, without a check: the ring has no end. From a deleted node a step leads to the end
    // position. Stepping a null iterator is undefined.
    cIterObj &operator++() noexcept;
    cIterObj &operator--() noexcept;
    cIterObj operator++(int);
    cIterObj operator--(int);

    int size() const noexcept;   // of the hash; 0 without a hash
    bool empty() const noexcept; // true without a hash
    int pos() const noexcept;    // linear; -1 if not valid
    // -1: the end position; -2: the last node; n: the n-th node, from 0; below -2: as 0. False
    // without a hash, and if there is no such node; the position is then unchanged, except that -2
    // in an empty container moves to the end.
    bool setpos(int n) noexcept;
    // False, unmoved, if the key does not exist. RUNS USER CODE: key hooks.
    bool setkey(objref const &key);
    bool setkey(std::string const &key);
    // False if the node is not in the ring; the iterator is then null. The end position becomes
    // null, too.
    virtual bool update();

  protected:
    explicit cIterObj(cTypeObj *type);
    void take(link *place, hashref const &hash);
    void take(cIterObj const &other) { take(other.link_, other.hash_); }
    void move(link *place) noexcept;
    // Runs update() each time `source` fires `changed`, by a slot stored under `member`. There is
    // one source at a time. RUNS USER CODE
    void follow(cObj &source, std::string const &member);

  private:
    class cFollower;

    bool at_node() const noexcept; // neither null nor the end; possibly a deleted node

    link *link_ = nullptr; // keeps the memory of a node; the anchor has none
    hashref hash_;
    // Borrowed: the slot is owned by the member and clears this pointer.
    cFollower *follower_ = nullptr;
};

// Deleted, since it would print a bool.
template <class Stream>
requires requires(Stream &os) { os.rdbuf(); }
void operator<<(Stream &os, cIterObj const &it) = delete;

// The standard methods of the type "iterator". For an object that is not a cIterObj they return
// false or cat::bad().
namespace cTomIterator {
QRV_API objref getattr(objref obj, objref key); // "key", "value", "pos"; else bad
// Only "value" of a valid position: overwrites it. Else false. RUNS USER CODE
QRV_API bool setattr(cObj &obj, objref &key, objref &value);
// 0x41000000 "Method 'assign' called from other type: ..."
QRV_API bool m_assign(cObj &obj, objref &arg);
QRV_API void dump(cObj const &obj); // prints a listing to std::cout
} // namespace cTomIterator

#pragma once
// cIterObj, a position in the ring of a hash: an object of type "iterator", so that it can stand
// in an attribute, and a by-value cursor from cObj::begin() and cObj::end().
//
// It keeps the hash alive, and the memory of its node, but not the node's place: when the node is
// deleted the iterator is invalid at once (pos() -1, values cat::bad(), key null), and update()
// makes it null. Null: no position. End: the ring's anchor.
//
// An iterator made to follow runs update() whenever its source says that it has changed
// (cObj::changed). The tie is a slot among its own members, "updatefromobj"; removing that member
// ends it, and so does the end of either side.

#include "qrv/core/cattrhash.h"
#include "qrv/core/cobj.h"

class QRV_API cIterObj : public cObj {
  public:
    using link = cNode<cAttrNode>;

    cIterObj();
    cIterObj(cIterObj const &other, bool rewind = false);
    explicit cIterObj(hashref const &hash); // shares; at the first node
    // Node and hash of source's begin(); null has none. With follow the source gets a signal
    // "changed" if it has none, and isn't kept alive. RUNS USER CODE
    explicit cIterObj(cObj *source, bool follow = false);
    ~cIterObj() override;

    cIterObj &operator=(cIterObj const &other); // node and hash
    cIterObj &operator=(cObj const &other);     // assign
    bool operator==(cIterObj const &other) const noexcept { return link_ == other.link_; }
    bool operator!=(cIterObj const &other) const noexcept { return link_ != other.link_; }
    using cObj::operator==;
    using cObj::operator!=;

    operator bool() const noexcept { return valid(); }
    // These would calculate with the bool. The distance of two cursors is that of their pos().
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

    cAttrNode *node() const noexcept; // never dereference the end position; null when lost
    cAttrHash *hash() const noexcept { return hash_.get(); }
    hashref const &hash_ref() const noexcept { return hash_; }
    objref const &key() const;             // null if not valid; cAttrNode::key
    objref const &valref() const noexcept; // cat::bad() if not valid
    cObj &value() const noexcept;
    cObj &operator*() const noexcept { return value(); }
    cObj *operator->() const noexcept { return &value(); }
    bool valid_value() const noexcept; // valid, and the value is neither null nor void
    std::string key_as_string() const;
    int key_as_index() const noexcept;

    // One link, no test: the ring has no ends. From a dead node a step leads to the end position;
    // a null position must not be stepped.
    cIterObj &operator++() noexcept;
    cIterObj &operator--() noexcept;
    cIterObj operator++(int);
    cIterObj operator--(int);

    int size() const noexcept;
    bool empty() const noexcept;
    int pos() const noexcept; // linear; -1 if not valid
    // -1 the end position, -2 the last node, n the n-th; false, unmoved, if there is none.
    bool setpos(int n) noexcept;
    bool setkey(objref const &key); // false, unmoved, if absent. RUNS USER CODE: key hooks
    bool setkey(std::string const &key);
    // False, and null from now on, if the node is no longer on the ring.
    virtual bool update();

  protected:
    explicit cIterObj(cTypeObj *type);
    void take(link *place, hashref const &hash);
    void take(cIterObj const &other) { take(other.link_, other.hash_); }
    void move(link *place) noexcept;
    // Runs update() at every `changed` of source, through a slot stored under `member`; one source
    // at a time. RUNS USER CODE
    void follow(cObj &source, std::string const &member);

  private:
    class cFollower;

    bool at_node() const noexcept; // neither null nor end; perhaps dead

    link *link_ = nullptr; // holds the memory of a node, never that of the anchor
    hashref hash_;
    cFollower *follower_ = nullptr; // borrowed from whoever holds the slot; it knows of us
};

// Would print a bool.
template <class Stream>
requires requires(Stream &os) { os.rdbuf(); }
void operator<<(Stream &os, cIterObj const &it) = delete;

// The standard methods of the type "iterator". They answer false or cat::bad() for an
// object that is not a cIterObj.
namespace cTomIterator {
QRV_API objref getattr(objref obj, objref key); // "key", "value", "pos"; else bad
QRV_API bool setattr(cObj &obj, objref &key, objref &value);
// 0x41000000 "Method 'assign' called from other type: ..."
QRV_API bool m_assign(cObj &obj, objref &arg);
QRV_API void dump(cObj const &obj); // a listing on the standard output stream
} // namespace cTomIterator

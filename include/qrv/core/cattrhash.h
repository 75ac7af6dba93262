#pragma once
// The attribute hash: the only keyed store of the library. Maps, vectors, sets and the member
// tables of objects and types are all a cAttrHash; a vector is a hash with the keys 0 to n-1.
//
// It has two structures over the same nodes: an open-addressing table with double hashing, for
// finding a key, and a doubly linked ring, for the order. That is the order of insertion; growing
// preserves it. The hooks of a key's type hash and compare it. While all keys are
// strings and ints of the library, a smaller index replaces the table (core/cattrhash_index.cpp).
//
// The hash owns its nodes and deletes them, without regard to their count. A cAttrNode * is
// borrowed and valid while the node exists. After cAttrNode::hold(), a deleted node stays in
// memory, empty and marked as dead, until the last unhold().
//
// RUNS USER CODE marks operations that may call hooks of key types, methods of types or destructors
// of values. Such code may change the same table: every operation allows that, and afterwards none
// accesses a node or a table that may have been removed.

#include "qrv/core/cobj.h"

#include <algorithm>
#include <concepts>
#include <iosfwd>
#include <memory>
#include <new>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

class cSetIndex;

// A link of a ring. A detached link points to itself in both directions.
template <class Node> class cNode {
  public:
    cNode() noexcept : next_(this), prev_(this) {}
    cNode(cNode const &) = delete;
    cNode &operator=(cNode const &) = delete;

    // Never null; that of a detached link is the link itself.
    cNode *next() const noexcept { return next_; }
    cNode *prev() const noexcept { return prev_; }
    bool is_detached() const noexcept { return next_ == this; }

  protected:
    ~cNode() = default;

  private:
    friend class cAttrHash;
    friend struct cAttrHashProbe;

    void link_before(cNode &place) noexcept {
        next_ = &place;
        prev_ = place.prev_;
        prev_->next_ = place.prev_ = this;
    }
    void unlink() noexcept {
        prev_->next_ = next_;
        next_->prev_ = prev_;
        next_ = prev_ = this;
    }

    cNode *next_;
    cNode *prev_;
};

// What a key is to the table. Keys of exactly the library's own types are compared without calling
// a hook.
enum class cKeyKind : unsigned char { other, int_key, string_key, float_key, double_key };

// A slot word: 0 never used, 1 tombstone; otherwise a cAttrNode * with some bits of the key's hash,
// in those bits that are not used by addresses.
using cSlotWord = std::uintptr_t;

// How the nodes of a hash are found. In all forms except `table`, the keys are exactly strings and
// ints.
//   few     up to 8 nodes, without additional memory: the ring is searched
//   row     the words are the nodes with the keys 0, 1, 2..., and possibly their values
//   index   a small open-addressing table; its size is a power of two
//   table   slots() words; a hash with a table never changes its form
enum class cHashForm : unsigned char { few, row, index, table };

// An entry of a table: a link with a key, its hash and its position in the table.
template <class Key, class Node> class cHashNode : public cNode<Node> {
  public:
    cHashNode(cHashNode const &) = delete;
    cHashNode &operator=(cHashNode const &) = delete;

  protected:
    explicit cHashNode(Key key) : key_(std::move(key)) {}
    ~cHashNode() = default;

    friend class cAttrHash;
    friend struct cAttrHashProbe;

    mutable Key key_;
    std::uint32_t hash_ = 0xFFFFFFFFu; // until the node is in a hash
    std::uint32_t slot_ = 0;           // the number of its word, if the hash has a table
    cAttrHash *table_ = nullptr;       // the hash; null if it is in none
};

// An attribute: a private key and a shared value. Bits of flags(): 1 reserved, 2 type locked.
class QRV_API cAttrNode : public cHashNode<objref, cAttrNode>, public cObjBase {
  public:
    using cLink = cNode<cAttrNode>;

    // Clones the key, or shares one that cannot be cloned; shares the value.
    explicit cAttrNode(objref const &key); // value cat::nil()
    cAttrNode(objref const &key, objref const &value);
    ~cAttrNode() override; // removes itself from its hash

    // Null for a deleted node. A key that the library has stored becomes an object at the first
    // call, with the id that it would have had from the beginning. Throws std::bad_alloc; the node
    // is then unchanged.
    objref const &key() const {
        if (lazy_) make_key();
        return key_;
    }
    // If false, the key is exactly a string or an int, and only the node owns it.
    bool has_key_object() const noexcept { return !lazy_; }
    // The value of a key that is exactly a string, or an int; else nothing. Creates no object. The
    // string is valid until the node is deleted or its key object changes.
    std::optional<std::string_view> key_string() const noexcept;
    std::optional<int> key_int() const noexcept;
    std::string key_as_string() const; // cat::as_string of the key
    int key_as_index() const;          // cat::as_index of the key: the int, or the lowest int
    objref const &valref() const noexcept { return value_; }
    // The stored reference itself. Null may be stored; it reads as cat::bad(). The library does not
    // notice a store through it. So the first call has a lasting cost: a set compares this value
    // with each value that it searches for, and in the whole process, storing a container first
    // searches that container for a cycle (cObj::may_be_a_value).
    objref &valref_() noexcept;
    cObj &value() const; // cat::bad() for a null reference
    cObj &operator*() const { return value(); }
    cObj *operator->() const { return &value(); }
    std::uint32_t anid() const noexcept { return anid_; } // unique, increasing, constant
    // The hash that owns it, borrowed, or null.
    cAttrHash *map() const noexcept { return mapped_ ? table_ : nullptr; }
    bool detach() const; // cat::detach(value, false)

    // Replaces the value; shares the new one. Null or badfind removes the node and returns
    // nil_attr(), so use only the result afterwards. If the type is locked, a value of another type
    // is refused:
    //   0x40400000 "cAttrNode, key: ...  value type: ...  Flags do not allow operator="
    // RUNS USER CODE
    cAttrNode &operator=(objref const &value);
    cAttrNode &operator=(cObj const *value); // shares
    cAttrNode &operator=(cAttrNode const &other);

    // Writes `key=value; `, the value as by cObj::writeobj. True if the stream is good afterwards.
    // RUNS USER CODE
    bool write(std::ostream &os) const;

    // The same for a node that may be null: null key, "", cat::bad(), 0, the lowest int, null,
    // nil_attr(), false.
    static objref const &key(cAttrNode const *node);
    static std::string key_as_string(cAttrNode const *node);
    static int key_as_index(cAttrNode const *node);
    static objref const &valref(cAttrNode const *node);
    static cObj &value(cAttrNode const *node);
    static std::uint32_t anid(cAttrNode const *node) noexcept { return node ? node->anid_ : 0; }
    static cAttrHash *map(cAttrNode const *node) noexcept { return node ? node->map() : nullptr; }
    static bool detach(cAttrNode const *node) { return node && node->detach(); }
    static cAttrNode &assign(cAttrNode *node, objref const &value);
    static cAttrNode &assign(cAttrNode *node, cAttrNode const *other); // null is cat::bad()
    static bool write(cAttrNode const *node, std::ostream &os);

    // Keeps the memory, not the attribute. When the hash deletes a held node, the node is dead:
    // detached, without key, value and map. All its functions may still be called.
    void hold() const noexcept { incref(); }
    void unhold() const noexcept;
    bool is_dead() const noexcept { return dead_; }

    // delete also frees the memory after the node. Only the library may use these.
    using cPooled::operator new;
    using cPooled::operator delete;
    static void operator delete(cAttrNode *node, std::destroying_delete_t, std::size_t size);

  private:
    friend class cAttrHash;
    friend class cSetIndex;
    friend struct cAttrInsert;
    friend struct cAttrHashProbe;

    struct cAdopt {};
    cAttrNode(cAdopt, objref &&key, objref &&value) noexcept; // adopts the key
    cAttrNode(cAttrNode const &other); // key, value and flags; a new anid; in no hash

    static objref clone_key(objref const &key);
    bool refuses(objref const &value);
    void before_replacing() noexcept; // the value
    // RUNS USER CODE: the old value's destructor, at the end.
    void set_value(objref const &value);
    void set_value(objref &&value); // the same
    void count_change(cObj *next) noexcept;
    objref take_value() noexcept; // when the node leaves its hash

    // Keys without an object: core/cattrnode_key.cpp.
    cAttrNode(objref const &value, std::size_t room, cKeyKind kind) noexcept;
    static cAttrNode *lazy_number(objref const &value);
    static cAttrNode *lazy_node(cKeyKind kind, std::string_view text, objref const &value);
    void reserve_key() noexcept;
    static cAttrNode *node_of_long(std::string_view text, objref const &value);
    static cAttrNode *with_key(objref const &key);
    void make_key() const;
    bool has_key_of(cKeyKind kind) const noexcept;
    std::string_view key_text() const noexcept; // for a string_key
    int key_number() const noexcept;            // for an int_key
    std::size_t memory() const noexcept { return sizeof *this + std::size_t{8} * room_; }
    struct cTakenKey;
    cTakenKey take_key() noexcept;
    static void uncount_key() noexcept { --ob_count_; }

    objref value_;
    std::uint32_t anid_;
    cKeyKind kind_ = cKeyKind::other; // set with hash_
    bool dead_ = false;
    bool mapped_ : 1 = false;       // map() is known
    bool given_out_ : 1 = false;    // valref_() was called
    mutable bool lazy_ : 1 = false; // the key has no object yet
    std::uint8_t room_ = 0;         // words after the node, for a key without an object
};

// Numbers that must not silently become an index.
template <class T>
concept cNoIndex = std::is_arithmetic_v<T> && !std::same_as<T, int>;
template <class T>
concept cNumber = std::is_arithmetic_v<T>;

class QRV_API cAttrHash : public cShared, public cPooled {
  public:
    using cLink = cAttrNode::cLink;

    explicit cAttrHash(cObj *father); // borrowed, may be null; 97 slots
    ~cAttrHash();                     // RUNS USER CODE

    // Deletes its nodes, then copies keys and shares values. Self-assignment is not checked: it
    // empties the hash. Does not copy father and flags; map() of the new nodes is null.
    // RUNS USER CODE
    cAttrHash &operator=(cAttrHash const &other);

    bool empty() const noexcept { return used_ == 0; }
    void clear();                                     // removes all nodes. RUNS USER CODE
    cObj *father() const noexcept { return father_; } // borrowed; null if there is no father
    // Sets the father, which is borrowed, unless there is another one and `force` is false.
    void father(cObj *father, bool force) noexcept;
    void flags(int bits) noexcept; // bits & 3 becomes the flags of every node
    bool detach() const; // all values, as cat::detach(value, false); true if all succeeded
    std::uint32_t used() const noexcept { return used_; }
    std::uint32_t slots() const noexcept { return size_; }
    // Whether searches may call hooks of key types, which are user code.
    bool has_foreign_keys() const noexcept { return others_ > 0; }

    // The ring. Null at the end, and after a deleted node or one of another hash.   O(1)
    cAttrNode *first() const noexcept { return node_at(anchor_.next()); }
    cAttrNode *last() const noexcept { return node_at(anchor_.prev()); }
    // True if no node was moved: the ring's order is then that of anid().
    bool in_creation_order() const noexcept { return !moved_; }
    cAttrNode *next(cAttrNode const *node) const noexcept;
    cAttrNode *prev(cAttrNode const *node) const noexcept;

    // For cursors, which can also be at the end position, the anchor. A node converts implicitly to
    // its link; only this function converts a link to a node: null for null and for the anchor. The
    // links of a deleted node point to itself.
    cLink *anchor() const noexcept { return &anchor_; }
    cAttrNode *node_at(cLink *link) const noexcept {
        return link == &anchor_ ? nullptr : static_cast<cAttrNode *>(link);
    }

    // Lookup. A null key or string is not found. Creates a key object for a string only if the hash
    // has keys of other types than the library's. RUNS USER CODE if has_foreign_keys()   O(1)
    cAttrNode *find(objref const &key) const;
    cAttrNode *find(std::string const &key) const;
    cAttrNode *find(std::string_view key) const;
    cAttrNode *find(char const *key) const;
    cAttrNode *find(int key) const;
    cAttrNode *find(cNoIndex auto) const = delete;
    // The value of an int key, borrowed; null if the key does not exist or its value is null. The
    // fastest access to an element of a vector.   O(1) on average
    cObj *valueof(int key) const;
    cObj *valueof(cNoIndex auto) const = delete;
    // By position, from 0; null at used() and above.
    // O(1) on a vector, else O(distance to the nearer end)
    cAttrNode *findpos(unsigned int position) const;
    // Position in the ring, or -1. RUNS USER CODE   O(n)
    int posofkey(objref const &key) const;
    int posofkey(std::string const &key) const;
    int posofkey(char const *key) const;
    int posofkey(cNumber auto) const = delete;
    // The first node with exactly this value, or null.   O(n)
    cAttrNode *findvalref(objref const &value) const noexcept { return findvalref(value.get()); }
    cAttrNode *findvalref(cObj const *value) const noexcept;
    // The first node whose value equals the argument, or null. RUNS USER CODE: value.equal()   O(n)
    cAttrNode *findvalue(cObj const &value) const;
    cAttrNode *findvalue(objref const &value) const; // null finds nothing
    // The value; cat::badfind() if the key does not exist. RUNS USER CODE if has_foreign_keys()
    [[nodiscard]] objref getitem(objref const &key) const;
    [[nodiscard]] objref getitem(std::string const &key) const;
    [[nodiscard]] objref getitem(char const *key) const;
    objref getitem(cNumber auto) const = delete;

    // Changes. Each RUNS USER CODE. Values are shared, keys cloned.

    // Overwrites an existing value, by cAttrNode::operator=. False for a key that is nil or does
    // not exist, for a null, bad or badfind value, and if a cErr was thrown.
    bool setitem(objref const &key, objref const &value);
    bool setitem(std::string const &key, objref value);
    bool setitem(char const *key, objref value);
    bool setitem(cNumber auto, objref const &) = delete;
    // Inserts or overwrites; null or badfind removes, and returns true. False for a nil key, for
    // cat::bad(), and for an executable that is not valid here. An executable gets the key as its
    // name.
    bool mapitem(objref const &key, objref const &value);
    bool mapitem(std::string const &key, objref value);
    bool mapitem(char const *key, objref value);
    bool mapitem(cNumber auto, objref const &) = delete;
    // Assigns to an existing value that is not void; else mapitem, and with `detach` a private
    // copy.
    bool copyitem(objref const &key, objref const &value, bool detach);
    // True whether or not the key existed; false for a nil key.
    bool delitem(objref const &key);
    bool delitem(std::string const &key);
    bool delitem(char const *key);
    bool delitem(cNumber auto) = delete;
    // Removes the key. Returns the node that followed, or null.
    cAttrNode *erase(objref const &key);
    // Finds or inserts the key, stores any value, even null, and moves the node before `before` if
    // that is a node of this hash. Null for a nil key. Refuses no executable.
    cAttrNode *insert(objref const &key, objref const &value, cAttrNode *before);
    // Moves the value and the position of old_key to new_key; a former value of new_key is
    // released. No effect if old_key does not exist or new_key is nil.
    void rename(objref const &old_key, objref const &new_key);
    bool detach(objref const &key) const; // false if the key does not exist
    bool detach(std::string const &key) const;
    bool detach(char const *key) const;
    bool detach(int key) const;
    bool detach(cNoIndex auto) const = delete;

    // Vector mode. Positions are those of the ring. Each change RUNS USER CODE.
    bool is_vector() const; // keys are exactly the ints 0, 1, 2...; true if empty
    void set_vector();      // renumbers; drops values that mapitem refuses
    // One more than the greatest index, where a non-int key counts as its conversion to int, or
    // as -1. Zero if empty; after the greatest int comes the lowest.   O(1) while all keys are ints
    int after_last_index() const;
    bool vect_append(objref const &value);
    // False for i < 0 or i > used(), for cat::bad(), and if a node disappears meanwhile because
    // null had been stored. Null or badfind erases position i.
    bool vect_insert(int i, objref const &value);
    bool vect_erase(int i); // false for i < 0; true at and past the end; values move, keys don't

    // Text form, in text/. `type` is the container's: null or cat::type_map() for entries with
    // keys, another one for values without keys. read_hash() returns the number of lines, at least
    // 1; 0 if an entry could not be inserted; -1 for the end of input without entries.
    // write_hash() with the format "s" writes one line; it returns true. RUNS USER CODE
    int read_hash(std::istream &is, cTypeObj *type);
    bool write_hash(std::ostream &os, char const *format, cTypeObj *type) const;

    // The same for a hash that may be null: empty, null, -1, false, no effect.
    static bool empty(cAttrHash const *hash) noexcept { return !hash || hash->empty(); }
    static cAttrNode *findpos(cAttrHash const *hash, unsigned int position);
    static int posofkey(cAttrHash const *hash, objref const &key);
    static bool mapitem(cAttrHash *hash, objref const &key, objref const &value);
    static bool setitem(cAttrHash *hash, objref const &key, objref const &value);
    static void set_vector(cAttrHash *hash);

    // Empty, or the first violated rule (rules: core/cattrhash_check.cpp). Only with `deep` it
    // calls the hooks of key types.   O(n)
    std::string broken_rule(bool deep) const;
    // The number of slots that all searches have examined since the process began.
    static std::uint64_t probe_count() noexcept;

  private:
    friend class cAttrNode;
    friend class cValueIndex;
    friend class cSetIndex;
    friend struct cAttrInsert;    // insertion without user code
    friend struct cBootstrap;     // removes what exists, but not what is inserted meanwhile
    friend struct cAttrHashProbe; // tests of the rules

    struct cSearch; // what is searched
    struct cFound { // the node, or else the word for an insertion
        cAttrNode *node;
        std::uint32_t free;
        std::uint32_t steps;
        bool stale; // a hook has changed the table: search again
    };
    class cKeep;
    class cHold;
    class cDestruction;

    // The end of the ring; a link that is not a node.
    struct cAnchor final : cLink {};

    cAttrHash(cAttrHash const &other); // an empty hash, copies nothing

    static cKeyKind kind_of(objref const &key);
    static std::uint32_t seeded_hash(cKeyKind kind, objref const &key);
    static std::uint32_t seeded_hash(cAttrNode const &node);
    std::uint32_t hash_of(cAttrNode const &node) const;
    static bool matches(cAttrNode const &node, cSearch const &search);
    cSearch search_for(objref const &key) const;
    cSearch search_for(std::string_view key) const;
    cSearch search_for(int key) const;
    cFound probe(cSearch const &search) const;
    cAttrNode *locate(objref const &key) const;

    cAttrNode *force_node(objref const &key);
    void link_node(cAttrNode &node, cFound place, cSearch const &search);
    void link_copy(cAttrNode &node, cAttrNode const &source) noexcept; // core/cattrhash_copy.cpp
    void unlink_node(cAttrNode &node) noexcept;
    void move_before(cAttrNode &node, cAttrNode &place) noexcept;
    void remove(cAttrNode *node);
    void remove_all();
    bool accept_exe(objref const &key, objref const &value);
    void count_in(cAttrNode const &node) noexcept;
    void count_out(cAttrNode const &node) noexcept;
    void grow_table(cAttrNode const &last, std::uint32_t live, std::uint32_t steps);
    void rebuild(std::uint32_t size, bool seed);
    std::uint32_t put(cAttrNode &node) noexcept;
    void seed_keys() noexcept;
    bool detach_node(cAttrNode const *node) const;
    static cSlotWord word_of(cAttrNode const &node) noexcept; // in a table
    static cSlotWord index_word_of(cAttrNode const &node) noexcept;
    bool has_word(cAttrNode const &node) const;
    std::string broken_table() const;
    std::string broken_deep() const;
    void check() const; // the cheap rules, in checking builds

    // For a hash without a table; defined in core/cattrhash_index.cpp.
    cFound probe_index(cSearch const &search) const;
    bool make_room(cAttrNode const &node, std::uint32_t steps);
    void add_to_index(cAttrNode &node, cFound const &place);
    void make_index();
    void rebuild_index(std::uint32_t capacity);
    void make_table(std::uint32_t size);
    void try_table(std::uint32_t size) noexcept;
    void replay_insertions(std::uint32_t size);
    bool index_holds(cAttrNode const &node) const;

    // The row of a vector: core/cattrhash_row.cpp.
    void append_next(objref const &value);
    void rebuild_row();
    void add_to_row(cAttrNode const &node) noexcept;
    void note_value(cAttrNode const &node, cObj *next) noexcept;
    cObj *value_of_node(int key) const;
    void copy_values() const noexcept;
    cSlotWord *known_values() const noexcept { return words_.get() + capacity_; }
    bool has_right_values() const noexcept;

    static std::uint32_t replaced_unseen_; // the number of values replaced without their node

    std::uint32_t size_;     // slots(): the size of the table, also before it exists; a prime
    std::uint32_t used_ = 0; // live nodes
    // The table's slots that are 0; in a row, the number of values that were read from their nodes.
    mutable std::uint32_t unused_ = 0;
    std::uint32_t capacity_ = 0;  // words
    std::uint32_t disturbed_ = 0; // nodes unlinked or moved; wraps
    std::uint32_t changes_ = 0;   // nodes linked or unlinked, and rebuilds; wraps
    std::uint32_t others_ = 0;    // nodes whose key is not of a built-in type
    std::uint32_t no_ints_ = 0;   // nodes whose key is not exactly an int
    mutable int greatest_ = -1;   // the maximum of the int keys and -1, if greatest_known_
    mutable bool greatest_known_ = true;
    mutable bool is_vector_ = true;   // false: not known
    bool moved_ = false;              // a node was moved in the ring since it was last empty
    mutable bool has_values_ = false; // of a row: its values are stored after the nodes
    bool seeded_ = false; // string and floating-point keys are hashed with the process's seed
    cHashForm form_ = cHashForm::few;
    mutable std::unique_ptr<cSlotWord[]> words_;
    mutable cAnchor anchor_;
    cObj *father_;                         // borrowed
    std::unique_ptr<cSetIndex> set_index_; // while a set needs it
};

inline cObj *cAttrHash::valueof(int key) const {
    auto const at = static_cast<std::uint32_t>(key);
    if (has_values_ && at < used_) {
        cSlotWord const *const values = known_values();
        if (values[at] != 0 && values[capacity_] == replaced_unseen_)
            return reinterpret_cast<cObj *>(values[at]);
    }
    return value_of_node(key);
}

// The next table size above `size`, a prime; 0 above the greatest.
QRV_API unsigned int hash_new_size(unsigned int size) noexcept;

// Represents a missing node: key "nil_attr", value cat::nil(), map null. Created on first use.
QRV_API cAttrNode &nil_attr();

// Orders of nodes: by key, by value (maps, then vectors, then the rest), by creation of the value,
// by creation of the node. Pointers may be null. keyord and valord call `less` of the types, which
// RUNS USER CODE and may not be a strict order (NaN, types without `less`): std::sort could then
// leave its range. Use cat::sort_nodes.
struct QRV_API cKeyOrder {
    bool operator()(cAttrNode const &a, cAttrNode const &b) const { return (*this)(&a, &b); }
    bool operator()(cAttrNode const *a, cAttrNode const *b) const;
};
struct QRV_API cValueOrder {
    bool operator()(cAttrNode const &a, cAttrNode const &b) const { return (*this)(&a, &b); }
    bool operator()(cAttrNode const *a, cAttrNode const *b) const;
};
struct QRV_API cObidOrder {
    bool operator()(cAttrNode const &a, cAttrNode const &b) const { return (*this)(&a, &b); }
    bool operator()(cAttrNode const *a, cAttrNode const *b) const;
};
struct QRV_API cAnidOrder {
    bool operator()(cAttrNode const &a, cAttrNode const &b) const { return (*this)(&a, &b); }
    bool operator()(cAttrNode const *a, cAttrNode const *b) const;
};
inline constexpr cKeyOrder keyord{};
inline constexpr cValueOrder valord{};
inline constexpr cObidOrder obidord{};
inline constexpr cAnidOrder anidord{};

namespace cat {
// A stable merge sort that never leaves its range, even if the order is inconsistent.
template <class Order> void sort_nodes(std::vector<cAttrNode *> &nodes, Order order) {
    std::vector<cAttrNode *> merged(nodes.size());
    for (size_t width = 1; width < nodes.size(); width *= 2) {
        for (size_t begin = 0; begin < nodes.size(); begin += 2 * width) {
            size_t const middle = std::min(begin + width, nodes.size());
            size_t const end = std::min(begin + 2 * width, nodes.size());
            size_t left = begin, right = middle;
            for (size_t i = begin; i < end; ++i) {
                bool const take_right =
                    right < end && (left == middle || order(nodes[right], nodes[left]));
                merged[i] = take_right ? nodes[right++] : nodes[left++];
            }
        }
        nodes.swap(merged);
    }
}
// The nodes of a hash in ring order, borrowed.
QRV_API std::vector<cAttrNode *> nodes_of(cAttrHash const &hash);
// At the end of the object core: nil_attr() is created again at its next use.
void forget_nil_attr() noexcept;
} // namespace cat

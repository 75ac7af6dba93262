#pragma once
// What the sources of cAttrHash share: the words of the table, guards, and the size table.

#include "core/cholders.h"
#include "core/cset_index.h"
#include "qrv/core/cattrhash.h"
#include "qrv/core/cobjd.h"

#include <cstring>
#include <span>
#include <string>
#include <string_view>

// A slot word moves only like this:  0 --insertion--> node --removal--> 1 --insertion--> node
// Only a rebuild, which starts a new array, makes zeros again. So a search stops at 0 and passes 1.
constexpr cSlotWord slot_unused = 0;
constexpr cSlotWord slot_deleted = 1;

// Except in a row, the upper bits of a node's word are its tag: the lower bits of the hash of an
// int or a string, 0 for other keys. A search skips a node with another tag without looking at it.
constexpr unsigned tag_shift = 48; // user addresses have 47 bits
constexpr cSlotWord address_mask = (cSlotWord{1} << tag_shift) - 1;

inline cAttrNode *node_of(cSlotWord word) noexcept {
    return word > slot_deleted ? reinterpret_cast<cAttrNode *>(word & address_mask) : nullptr;
}

constexpr cSlotWord tag_of(std::uint32_t hash) noexcept { return cSlotWord{hash} << tag_shift; }
constexpr cSlotWord tag_of(cKeyKind kind, std::uint32_t hash) noexcept {
    bool const has_tag = kind == cKeyKind::int_key || kind == cKeyKind::string_key;
    return has_tag ? tag_of(hash) : 0;
}
// Does the node of this word have a tag that differs from the one of the searched key?
constexpr bool is_other_key(cSlotWord word, cSlotWord tag) noexcept {
    return word > address_mask && (word ^ tag) > address_mask;
}

// While one in `unused_part` slots was never used, a probe with ordinary keys becomes this long
// once in 10^7 searches.
constexpr std::uint32_t long_probe = 128;

// The value of a key whose kind says that it holds a T.
template <class T> T const &value_of(objref const &key) noexcept {
    return static_cast<cObjDR<T> const &>(*key).val();
}
inline std::string_view text_of(objref const &key) noexcept { return value_of<std::string>(key); }
// Compares the first and the last word, which may overlap. Strings of one to two words have no
// other bytes.
template <class Word> bool has_same_ends(std::string_view a, std::string_view b) noexcept {
    Word begin[2], end[2];
    std::size_t const last = a.size() - sizeof(Word);
    std::memcpy(&begin[0], a.data(), sizeof(Word));
    std::memcpy(&begin[1], b.data(), sizeof(Word));
    std::memcpy(&end[0], a.data() + last, sizeof(Word));
    std::memcpy(&end[1], b.data() + last, sizeof(Word));
    return ((begin[0] ^ begin[1]) | (end[0] ^ end[1])) == 0;
}
// Compares short keys, which most are, without a call: the call would cost more than the
// comparison.
inline bool same_text(std::string_view own, std::string_view text) noexcept {
    std::size_t const size = own.size();
    if (size != text.size()) return false;
    if (size >= 8 && size <= 16) return has_same_ends<std::uint64_t>(own, text);
    if (size >= 4 && size < 8) return has_same_ends<std::uint32_t>(own, text);
    return std::memcmp(own.data(), text.data(), size) == 0;
}

std::uint32_t text_hash(std::string_view text, bool seeded);

extern constinit std::uint64_t hash_probes; // probe_count()

constexpr bool fits_index(cKeyKind kind) noexcept {
    return kind == cKeyKind::int_key || kind == cKeyKind::string_key;
}

// Can an index of `words` words hold `nodes` nodes?
constexpr bool fits_words(std::uint32_t nodes, std::uint32_t words) noexcept {
    return std::uint64_t{4} * nodes <= std::uint64_t{3} * words;
}

// The key of a removed node, which is released after the node's value.
struct cAttrNode::cTakenKey {
    cTakenKey(objref taken, bool is_lazy) noexcept : key(std::move(taken)), lazy(is_lazy) {}
    cTakenKey(cTakenKey const &) = delete;
    cTakenKey &operator=(cTakenKey const &) = delete;
    ~cTakenKey() {
        if (lazy) uncount_key();
    }

    objref key;
    bool lazy;
};

// Follows a node whose key has no object: the id that is reserved for the object, and the length
// and bytes of a string.
struct cLazyKey {
    static constexpr std::size_t at_length = sizeof(std::uint32_t);
    static constexpr std::size_t at_text = at_length + 1;

    static unsigned char *of(cAttrNode const *node) noexcept {
        return const_cast<unsigned char *>(reinterpret_cast<unsigned char const *>(node)) +
               sizeof(cAttrNode);
    }
};

// The greatest number of nodes of a hash without words. Most hashes are that small.
constexpr std::uint32_t most_few = 8;

inline std::string_view cAttrNode::key_text() const noexcept {
    if (!lazy_) return text_of(key_);
    unsigned char const *const place = cLazyKey::of(this);
    return {reinterpret_cast<char const *>(place + cLazyKey::at_text), place[cLazyKey::at_length]};
}
inline int cAttrNode::key_number() const noexcept {
    return lazy_ ? static_cast<int>(hash_) : value_of<int>(key_);
}

[[gnu::always_inline]] inline void cAttrNode::count_change(cObj *next) noexcept {
    before_replacing();
    if (table_) table_->note_value(*this, next);
    cHolders::enter(next);
    cHolders::leave(value_);
}
inline void cAttrNode::set_value(objref const &value) {
    count_change(value);
    value_ = value; // RE-ENTERS
}
inline void cAttrNode::set_value(objref &&value) {
    count_change(value);
    value_ = std::move(value); // RE-ENTERS
}
inline objref cAttrNode::take_value() noexcept {
    cHolders::leave(value_);
    return std::move(value_);
}
inline void cAttrNode::before_replacing() noexcept {
    if (table_ && table_->set_index_) [[unlikely]]
        table_->set_index_->loosen(*this);
}

// Called before the node has this value.
inline void cAttrHash::note_value(cAttrNode const &node, cObj *next) noexcept {
    if (has_values_)
        known_values()[node.hash_] = node.given_out_ ? 0 : reinterpret_cast<cSlotWord>(next);
}

inline cSlotWord cAttrHash::word_of(cAttrNode const &node) noexcept {
    return reinterpret_cast<cSlotWord>(&node) | tag_of(node.kind_, node.hash_);
}
inline cSlotWord cAttrHash::index_word_of(cAttrNode const &node) noexcept {
    return reinterpret_cast<cSlotWord>(&node) | tag_of(node.hash_);
}

struct cAttrHash::cSearch {
    std::uint32_t hash;
    cKeyKind kind;
    objref const *key;     // null when only text or hash is given: nothing foreign is met then
    std::string_view text; // of a string key
    bool own_key = false;  // a new node's key is of that kind, not a clone made by other code
};

// Keeps a hash in memory while an operation runs user code that may drop its last owner. The count
// of a hash without shared owners (a member, a local variable) never reaches 0 here.
class cAttrHash::cKeep {
  public:
    explicit cKeep(cAttrHash const *hash) noexcept : hash_(hash) { hash_->incref(); }
    ~cKeep() {
        if (hash_->decref()) delete hash_;
    }
    cKeep(cKeep const &) = delete;
    cKeep &operator=(cKeep const &) = delete;

  private:
    cAttrHash const *hash_;
};

// Keeps a node's memory, so that is_dead() can be asked after user code has run.
class cAttrHash::cHold {
  public:
    explicit cHold(cAttrNode const *node) noexcept : node_(node) {
        if (node_) node_->hold();
    }
    ~cHold() {
        if (node_) node_->unhold();
    }
    cHold(cHold const &) = delete;
    cHold &operator=(cHold const &) = delete;

  private:
    cAttrNode const *node_;
};

// The next size of a table of `size` slots: the first of `primes` above size + 1; when they end,
// the first prime above 2 * size. Throws std::length_error beyond 32 bits.
std::uint32_t hash_grown_size(std::uint32_t size, std::span<std::uint32_t const> primes);
std::span<std::uint32_t const> hash_primes() noexcept;

#pragma once
// What the sources of cAttrHash share: the words of the table, guards, and the size table.

#include "qrv/core/cattrhash.h"
#include "qrv/core/cobjd.h"

#include <span>
#include <string>
#include <string_view>

// A slot word moves only like this:  0 --insertion--> node --removal--> 1 --insertion--> node
// Only a rebuild, which starts a new array, makes zeros again. So a search stops at 0 and passes 1.
constexpr cSlotWord slot_unused = 0;
constexpr cSlotWord slot_deleted = 1;

inline cAttrNode *node_of(cSlotWord word) noexcept {
    return word > slot_deleted ? reinterpret_cast<cAttrNode *>(word) : nullptr;
}

// With one in `unused_part` slots never used, a probe of honest keys gets here once in 10^7 tries.
constexpr std::uint32_t long_probe = 128;

// Of a key whose kind says that it holds a T.
template <class T> T const &value_of(objref const &key) noexcept {
    return static_cast<cObjDR<T> const &>(*key).val();
}
inline std::string_view text_of(objref const &key) noexcept { return value_of<std::string>(key); }
// Without the order of the two, for which `==` of views makes a call of its own.
inline bool is_text(objref const &key, std::string_view text) noexcept {
    std::string_view const own = text_of(key);
    return own.size() == text.size() &&
           std::char_traits<char>::compare(own.data(), text.data(), text.size()) == 0;
}

std::uint32_t text_hash(std::string_view text, bool seeded);

extern constinit std::uint64_t hash_probes; // probe_count()

constexpr bool fits_index(cKeyKind kind) noexcept {
    return kind == cKeyKind::int_key || kind == cKeyKind::string_key;
}

struct cAttrHash::cSearch {
    std::uint32_t hash;
    cKeyKind kind;
    objref const *key;     // null when only text or hash is given: nothing foreign is met then
    std::string_view text; // of a string key
    bool own_key = false;  // a new node's key is of that kind, not a clone made by other code
};

// Keeps a hash in memory while an operation runs foreign code that may drop its last owner. A hash
// that nobody shares (a member, a local) has a count of its own that never reaches 0 here.
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

// Keeps a node's memory, so that is_dead() can be asked after foreign code has run.
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

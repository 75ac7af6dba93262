#pragma once
// An index of the plain values in a hash: the strings, ints and bools of the library's own types. A
// set searches it before it appends. The index exists as long as the hash has entries. Each entry
// is in one of three states:
//
//   outside   the entry holds nothing that a plain value could equal
//   table     found by the hash of its value
//   loose     compared one by one: its value may have changed, or may change without notice
//
// An entry becomes loose before its value is replaced or changed, and returns to the table at the
// next search. It stays loose while its value is an object that refers to a value elsewhere, or an
// object of a class that a program derived. It stays loose for good once cAttrNode::valref_() has
// returned the reference or cObjDR<T>::val() the value. Each object stores which index has its
// value (cObj::index_), so a change of any other object costs one test.

#include "qrv/core/cattrhash.h"

#include <unordered_set>
#include <vector>

class cSetIndex {
  public:
    // Does an entry hold a value for which value.equal(entry's value) is true? A hash with more
    // than a few entries gets an index. RUNS USER CODE if the value is not plain.
    static bool holds(cAttrHash &hash, objref const &value);

    explicit cSetIndex(cAttrHash const &hash);
    cSetIndex(cSetIndex const &) = delete;
    cSetIndex &operator=(cSetIndex const &) = delete;
    ~cSetIndex();

    void enter(cAttrNode &node) noexcept;  // a new entry
    void leave(cAttrNode &node) noexcept;  // before the entry, or its value, is removed
    void loosen(cAttrNode &node) noexcept; // before its value is replaced
    // Call before the value of an object changes that is in an index.
    static void loosen(cObj const &value) noexcept;

    // The hash of an int. The factor is odd, and random in each process.
    static std::uint32_t spread(std::uint64_t bits, std::uint64_t factor) noexcept;

    // Is each entry of the hash in its right state?   O(n)
    bool is_whole(cAttrHash const &hash) const;

    static constexpr std::uint16_t several = 0xFFFE; // for cObj::index_: more than one index
    static constexpr std::uint16_t given_out = 0xFFFF;

  private:
    struct cEntry {
        cAttrNode *node = nullptr;
        std::uint32_t hash = 0;
    };

    bool holds_plain(cObj const &value);
    void settle_loose();
    void put_or_loosen(cAttrNode &node);
    bool put(cAttrNode &node);
    bool place(cEntry entry) noexcept;
    void grow();
    bool take_out(cAttrNode const &node) noexcept;
    void remove_at(std::size_t at) noexcept;
    void loosen_value(cObj const &value) noexcept;
    void give_up() noexcept;
    void mark(cObj const &value) const noexcept;
    std::uint32_t hash_of(cObj const &value) const;

    std::size_t const place_; // among the living indexes
    std::uint16_t const id_;
    bool failed_ = false; // memory ran out: searches compare all entries
    std::uint64_t const factor_;
    std::vector<cEntry> table_; // open-addressed, a power of two; no tombstones
    std::size_t count_ = 0;     // of the table
    std::unordered_set<cAttrNode *> loose_;
};

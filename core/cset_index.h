#pragma once
// Which plain values the entries of a hash hold: the strings, ints and bools of the library's own
// types. A set asks it before it appends, so it lives as long as the hash has entries.
//
//   outside   the entry holds nothing that a plain value could equal
//   table     found by the hash of its value
//   loose     compared one by one: its value may have changed, or may change without notice
//
// An entry moves from the table to the loose ones before its value is replaced or changed, and back
// at the next question. It stays loose while its value is an object that refers to a value that
// lives elsewhere, or of a class that a program derived; for good once cAttrNode::valref_() gave
// out the reference or cObjDR<T>::val() the value. Of which index its value is a part is known to
// the object (cObj::index_), so that a change of any other object costs one test.

#include "qrv/core/cattrhash.h"

#include <unordered_set>
#include <vector>

class cSetIndex {
  public:
    // Does an entry hold a value that equals this one, which is the left side? Hashes beyond a few
    // entries get an index. RUNS USER CODE if the value is not plain.
    static bool holds(cAttrHash &hash, objref const &value);

    explicit cSetIndex(cAttrHash const &hash);
    cSetIndex(cSetIndex const &) = delete;
    cSetIndex &operator=(cSetIndex const &) = delete;
    ~cSetIndex();

    void enter(cAttrNode &node) noexcept;  // a new entry
    void leave(cAttrNode &node) noexcept;  // before the entry, or its value, is removed
    void loosen(cAttrNode &node) noexcept; // before its value is replaced
    // Before the value of an object changes that is a part of some index.
    static void loosen(cObj const &value) noexcept;

    // Is each entry of the hash where it must be?   O(n)
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
    bool failed_ = false; // without memory: everything is compared by walking
    std::uint64_t const factor_;
    std::vector<cEntry> table_; // open-addressed, a power of two; no tombstones
    std::size_t count_ = 0;     // of the table
    std::unordered_set<cAttrNode *> loose_;
};

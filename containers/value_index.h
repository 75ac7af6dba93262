#pragma once
// Finds values in a hash as cAttrHash::findvalue does, but ints, bools and strings in constant
// time: for loops that look many values up in one hash, such as reading and comparing sets.
//
// An object can change without its holders being told, so the index is for the length of a loop in
// which only such plain values are handled. Appending, removing and moving nodes is noticed; where
// a value in the hash may have been replaced or changed (user code ran) call forget().

#include "qrv/core/cattrhash.h"

#include <unordered_map>

class cValueIndex {
  public:
    explicit cValueIndex(cAttrHash const &hash) noexcept : hash_(hash) {} // borrowed
    cValueIndex(cValueIndex const &) = delete;
    cValueIndex &operator=(cValueIndex const &) = delete;
    ~cValueIndex() = default;

    // The first node whose value equals the argument, or null. Values that are not plain, and
    // types with an "equal" of their own, are looked up by the hash (RUNS USER CODE, after
    // which everything is forgotten).   O(1) for plain ones, after O(new nodes)
    cAttrNode *find(cObj const &value);
    void forget() noexcept;

    // Exactly an int, bool or string whose type compares as the library does.
    static bool is_plain(cObj const &value) noexcept;

  private:
    struct cTextHash {
        std::size_t operator()(std::string const &text) const;
    };

    void take_new_nodes();
    void take(cAttrNode *node);
    cAttrNode *look_up(cObj const &value) const;

    cAttrHash const &hash_;
    std::uint32_t disturbed_ = 0;
    cAttrNode *last_ = nullptr; // the last node that was taken; alive while nothing was disturbed
    std::unordered_map<int, cAttrNode *> ints_;
    std::unordered_map<std::string, cAttrNode *, cTextHash> texts_;
    cAttrNode *bools_[2] = {};
};

#pragma once
// Finds values in a hash like cAttrHash::findvalue, but ints, bools and strings in constant time.
// For loops that look up many values in one hash, such as reading and comparing sets.
//
// An object can change without notice, so use an index only for a loop that handles only such plain
// values. The index notices appended, removed and moved nodes. Call forget() when user code ran,
// which may have replaced or changed a value in the hash.

#include "qrv/core/cattrhash.h"

#include <unordered_map>

class cValueIndex {
  public:
    explicit cValueIndex(cAttrHash const &hash) noexcept : hash_(hash) {} // borrowed
    cValueIndex(cValueIndex const &) = delete;
    cValueIndex &operator=(cValueIndex const &) = delete;
    ~cValueIndex() = default;

    // The first node whose value equals the argument, or null. For values that are not plain, or
    // whose type has its own "equal", calls cAttrHash::findvalue (RUNS USER CODE) and then
    // forget(). O(1) for plain values, after O(new nodes)
    cAttrNode *find(cObj const &value);
    void forget() noexcept;

  private:
    struct cTextHash {
        std::size_t operator()(std::string const &text) const;
    };

    void take_new_nodes();
    void take(cAttrNode *node);
    cAttrNode *look_up(cObj const &value) const;

    cAttrHash const &hash_;
    std::uint32_t disturbed_ = 0;
    cAttrNode *last_ = nullptr; // the last indexed node; valid while no node is removed or moved
    std::unordered_map<int, cAttrNode *> ints_;
    std::unordered_map<std::string, cAttrNode *, cTextHash> texts_;
    cAttrNode *bools_[2] = {};
};

#pragma once
// Which values a set holds already, while it is read. A set keeps the first of equal values; asking
// the set itself walks it for each new value. Values of exactly the types int, bool and string that
// bring no `equal` of their own are kept by value here; all others are walked for.
//
// What the index finds is looked at again: a value may have been assigned to meanwhile.

#include "qrv/containers/cattrhash.h"

class cSetIndex {
  public:
    explicit cSetIndex(cAttrHash &set); // borrows; takes in what it holds
    cSetIndex(cSetIndex const &) = delete;
    cSetIndex &operator=(cSetIndex const &) = delete;
    ~cSetIndex() = default;

    // The first value of the set that equals this one, or null. RUNS FOREIGN CODE for values that
    // are not indexed.
    objref find(objref const &value) const;
    void add(objref const &value); // one that was stored

  private:
    static bool indexed(objref const &value);
    objref *bool_slot(objref const &value);
    objref const *bool_slot(objref const &value) const;

    cAttrHash *set_;
    cAttrHash first_{nullptr}; // ints and strings: the value under itself
    objref bools_[2];
};

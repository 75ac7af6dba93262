#pragma once
// Appends many values to one object by cObj::append. A plain set is asked through an index whether
// it holds an equal value, so that filling it costs by its size and not by its square; the results
// are those of single calls.

#include "containers/value_index.h"
#include "qrv/containers/cmapobj.h"

#include <optional>

namespace cat {

class cAppending {
  public:
    explicit cAppending(cObj &holder); // borrowed
    cAppending(cAppending const &) = delete;
    cAppending &operator=(cAppending const &) = delete;
    ~cAppending() = default;

    bool append(objref const &value); // RUNS FOREIGN CODE
    // To be called where, between two calls, something may have run that changes values.
    void disturb() noexcept {
        if (index_) index_->forget();
    }

  private:
    bool is_plain_set() const;

    cObj &holder_;
    cMapObj *set_; // null: not exactly a set
    hashref hash_; // of the set
    std::optional<cValueIndex> index_;
};

} // namespace cat

#pragma once
// Destroying a whole hash. The entries are removed from the front, and what each held is released
// right after it; so user code in a destructor finds a hash that lacks this entry and those before
// it, and may even change it. But most values are the library's own, and no code can look: their
// nodes are freed without keeping table and counts in order. Before an object is destroyed that
// may run user code, every hash that is being destroyed, here and further out, is put in order.

#include "core/cattrhash_detail.h"

class cAttrHash::cDying {
  public:
    explicit cDying(cAttrHash &hash) noexcept : hash_(hash), outer_(innermost) { innermost = this; }
    cDying(cDying const &) = delete;
    cDying &operator=(cDying const &) = delete;
    ~cDying() { innermost = outer_; }

    void run();

  private:
    void free(cAttrNode &node);
    static void leave_held(cAttrNode &node);
    void put_in_order();
    static void release(cObj *target);

    static constinit cDying *innermost;

    cAttrHash &hash_;
    cDying *outer_;
    bool in_order_ = false; // and then so are all further out
};

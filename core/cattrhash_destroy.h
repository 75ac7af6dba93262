#pragma once
// Destroys a whole hash. Entries are removed from the front, and the key and value of each are
// released right after it. So user code in a destructor finds a hash without this entry and those
// before it, and may even change the hash.
//
// Most values belong to the library and run no user code. Their nodes are freed without updating
// the table and the counts. Before an object that may run user code is destroyed, every hash that
// is being destroyed, here and in outer calls, is put in order.

#include "core/cattrhash_detail.h"

class cAttrHash::cDestruction {
  public:
    explicit cDestruction(cAttrHash &hash) noexcept : hash_(hash), outer_(innermost) {
        innermost = this;
    }
    cDestruction(cDestruction const &) = delete;
    cDestruction &operator=(cDestruction const &) = delete;
    ~cDestruction() { innermost = outer_; }

    void run();

  private:
    void free(cAttrNode &node);
    static void leave_held(cAttrNode &node);
    void put_in_order();
    static void release(cObj *target);

    static constinit cDestruction *innermost;

    cAttrHash &hash_;
    cDestruction *outer_;
    bool in_order_ = false; // if true, those of outer calls are in order too
};

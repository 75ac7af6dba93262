#pragma once
// Takes away the types that a test has registered, at the end of its life.

#include "qrv/core/ctypes.h"

#include <vector>

class cTypesBack {
  public:
    cTypesBack() : before_(keys()) {}
    cTypesBack(cTypesBack const &) = delete;
    cTypesBack &operator=(cTypesBack const &) = delete;
    ~cTypesBack() {
        std::vector<objref> const now = keys(); // new ones stand behind
        for (std::size_t i = before_.size(); i < now.size(); ++i)
            cat::type_hash_ptr()->delitem(now[i]);
    }

  private:
    static std::vector<objref> keys() {
        std::vector<objref> found;
        cAttrHash const &types = *cat::type_hash_ptr();
        for (cAttrNode const *node = types.first(); node; node = types.next(node))
            found.push_back(node->key());
        return found;
    }

    std::vector<objref> before_;
};

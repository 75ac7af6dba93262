#pragma once
// Removes the types that a test has registered, at the end of its scope. The library's own types
// that are created on first use stay: the library would not register them again.

#include "containers/csignalobj_types.h"
#include "qrv/core/ctypes.h"

#include <vector>

class cTypesBack {
  public:
    cTypesBack() : before_(keys()) {}
    cTypesBack(cTypesBack const &) = delete;
    cTypesBack &operator=(cTypesBack const &) = delete;
    ~cTypesBack() {
        cAttrHash &types = *cat::type_hash_ptr();
        std::vector<objref> const now = keys(); // new types are at the end
        for (std::size_t i = before_.size(); i < now.size(); ++i)
            if (!cat::is_signal_type(types.find(now[i])->valref().get())) types.delitem(now[i]);
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

#pragma once
// Declared types in the order of a value. A file can be read only if each type is declared before
// the first value that needs it.

#include "qrv/core/ctypeobj.h"
#include "tools/qrv/output/messages.h"

#include <string>
#include <unordered_map>

class cTypeOrder {
  public:
    // Notes the types that a value declares.   O(size)
    explicit cTypeOrder(objref const &root);

    // Is one of them needed before it is declared in the changed value, or where it is not declared
    // any more? That is an error then.   O(size)
    bool tell_broken(objref const &root, cMessages &messages) const;

  private:
    std::unordered_map<cObj const *, objref> declared_; // held: a change may remove them
};

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

    // Reports a type that the changed value needs before its declaration, or without one. True if
    // there is such a type.   O(size)
    bool report_broken(objref const &root, cMessages &messages) const;

  private:
    std::unordered_map<cObj const *, objref> declared_; // held: a change may remove them
};

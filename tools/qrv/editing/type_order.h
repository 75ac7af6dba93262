#pragma once
// Checks the order of declared types. A file can be read only if each type is declared before the
// first value that needs it.

#include "qrv/core/ctypeobj.h"
#include "tools/qrv/output/messages.h"

#include <string>
#include <unordered_map>

class cTypeOrder {
  public:
    // Collects the types that a value declares.   O(size)
    explicit cTypeOrder(objref const &root);

    // Reports a type that the changed value uses before its declaration, or whose declaration it
    // lacks. Returns whether there is such a type.   O(size)
    bool report_broken(objref const &root, cMessages &messages) const;

  private:
    std::unordered_map<cObj const *, objref> declared_; // held: a change may remove them
};

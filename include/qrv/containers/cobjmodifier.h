#pragma once
// cObjModifier replaces an attribute during its own lifetime. Constructor and destructor
// RUNS USER CODE; the destructor discards exceptions.

#include "qrv/containers/cattr.h"

// A copy restores the value, too.
class QRV_API cObjModifier {
  public:
    cObjModifier(cAttr &attr, objref const &value); // shares owner, key and value
    cObjModifier(cObjModifier const &other) = default;
    cObjModifier &operator=(cObjModifier const &) = delete;
    ~cObjModifier();

  private:
    cAttr attr_;
    objref previous_;
};

#pragma once
// cObjModifier replaces an attribute for its own lifetime. Its destructor runs user code and
// lets nothing escape.

#include "qrv/containers/cattr.h"

// A copy restores too.
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

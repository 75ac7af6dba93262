#pragma once
// cSetObj, a vector that refuses to take a value equal to one it holds, as far as values enter by
// append or setattr. Equal sets hold each other's values in any order.

#include "qrv/containers/cmapobj.h"

class QRV_API cSetObj : public cMapObj {
  public:
    cSetObj();
    cSetObj(cSetObj const &other);
    explicit cSetObj(cObj const &other);
    ~cSetObj() override;
    cSetObj &operator=(cSetObj const &other);
    cSetObj &operator=(cObj const &other);
};

// The standard methods of type "set"; iterobj is that of cTomMap.
namespace cTomSet {
QRV_API bool setattr(cObj &obj, objref &key, objref &value); // true, unchanged, if it is there
QRV_API objref getattr(objref obj, objref key);
QRV_API bool m_assign(cObj &obj, objref &arg); // a set assigned to itself comes out empty
QRV_API bool m_add(cObj &obj, objref &arg);    // forms the union; true
QRV_API bool m_append(cObj &obj, objref &arg); // false if an equal value is there
QRV_API bool m_equal(cObj &obj, objref &arg);
QRV_API bool m_write(cObj &obj, objref &stream);
QRV_API bool m_read(cObj &obj, objref &stream);
} // namespace cTomSet

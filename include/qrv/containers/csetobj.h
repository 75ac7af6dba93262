#pragma once
// cSetObj, a vector that refuses a value equal to an existing one, if it is inserted by append or
// setattr. Two sets are equal if each contains the other's values, in any order.

#include "qrv/containers/cmapobj.h"

class QRV_API cSetObj : public cMapObj {
  public:
    cSetObj(); // does not run `create`
    // Runs `create`, then assigns; copies all flags. RUNS USER CODE
    cSetObj(cSetObj const &other);
    explicit cSetObj(cObj const &other); // the same without `create`
    ~cSetObj() override;
    cSetObj &operator=(cSetObj const &other);
    cSetObj &operator=(cObj const &other);
};

// The standard methods of type "set"; iterobj is that of cTomMap. Each RUNS USER CODE.
namespace cTomSet {
// True, without effect, for an existing value.
QRV_API bool setattr(cObj &obj, objref &key, objref &value);
QRV_API objref getattr(objref obj, objref key);
QRV_API bool m_assign(cObj &obj, objref &arg); // a set that is assigned to itself becomes empty
QRV_API bool m_add(cObj &obj, objref &arg);    // inserts the missing values; true
QRV_API bool m_append(cObj &obj, objref &arg); // false if an equal value exists
QRV_API bool m_equal(cObj &obj, objref &arg);
QRV_API bool m_write(cObj &obj, objref &stream);
QRV_API bool m_read(cObj &obj, objref &stream);
} // namespace cTomSet

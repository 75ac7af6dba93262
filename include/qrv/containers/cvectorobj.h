#pragma once
// cVectorObj, a map whose keys are the ints 0 to n-1 and stay so: values move down when a place is
// removed, and the last key goes. The discipline lies in the methods of cTomVector.
// append ignores entrytype and of_const_keys; setattr doesn't.

#include "qrv/containers/cmapobj.h"

class QRV_API cVectorObj : public cMapObj {
  public:
    cVectorObj();
    cVectorObj(cVectorObj const &other);
    explicit cVectorObj(cObj const &other);
    ~cVectorObj() override;
    cVectorObj &operator=(cVectorObj const &other);
    cVectorObj &operator=(cObj const &other);

    // Opens a place; a kill value closes one. No test of flags or entry type. False out of range.
    bool insert(int place, objref const &value);
    // Removes the places from start to start + count, as far as they exist. True.
    bool erase(int start, int count);
    // Replaces places by the values of source that fit entrytype. The places from start on are
    // removed, as many as the end of the range says: start + count, at most the size. For a start
    // above 0 this is more than count. False for a start behind the end of the range.
    bool setslice(cObj const &source, int start, int count);
};

// The standard methods of type "vector"; append and iterobj are those of cTomMap.
namespace cTomVector {
// Overwrites at 0 to n-1, appends at n; a kill value closes the gap.
//   0x40020000 "Setattr in object type '...', key '...': " and
//     "  Key of vector or set must be 'int'", "  Key is OUT OF RANGE",
//     "  Flag of const key set offended"
QRV_API bool setattr(cObj &obj, objref &key, objref &value);
QRV_API objref getattr(objref obj, objref key);
QRV_API bool m_assign(cObj &obj, objref &arg);
QRV_API bool m_add(cObj &obj, objref &arg); // concatenates; true
QRV_API bool m_equal(cObj &obj, objref &arg);
QRV_API bool m_write(cObj &obj, objref &stream);
QRV_API bool m_read(cObj &obj, objref &stream);
} // namespace cTomVector

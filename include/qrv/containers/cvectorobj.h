#pragma once
// cVectorObj, a map whose keys are always the ints 0 to n-1: when a value is removed, those after
// it move down, and the last key is removed. The methods of cTomVector enforce this. append ignores
// entrytype and of_const_keys; setattr does not.

#include "qrv/containers/cmapobj.h"

class QRV_API cVectorObj : public cMapObj {
  public:
    // A copy assigns the values and copies all flags. A copy of another object does not run
    // `create`. RUNS USER CODE
    cVectorObj();
    cVectorObj(cVectorObj const &other);
    explicit cVectorObj(cObj const &other);
    ~cVectorObj() override;
    cVectorObj &operator=(cVectorObj const &other);
    cVectorObj &operator=(cObj const &other);

    // Inserts before this position; a kill value removes it. No check of flags or entry type. False
    // if it is out of range. RUNS USER CODE
    bool insert(int place, objref const &value);
    // Removes the existing positions of start to start + count - 1. True. RUNS USER CODE
    bool erase(int start, int count);
    // Replaces values by those of `source` that have the type entrytype. Removes from `start` on as
    // many values as the number at the end of the range, min(start + count, size): more than
    // `count` for a start above 0. False if `start` is after that end. RUNS USER CODE
    bool setslice(cObj const &source, int start, int count);
};

// The standard methods of type "vector"; append and iterobj are those of cTomMap. Each
// RUNS USER CODE.
namespace cTomVector {
// Overwrites at 0 to n-1, appends at n; a kill value removes, and later values move down.
//   0x40020000 "Setattr in object type '...', key '...': " and
//     "  Key of vector or set must be 'int'", "  Key is OUT OF RANGE",
//     "  Flag of const key set offended"
QRV_API bool setattr(cObj &obj, objref &key, objref &value);
QRV_API objref getattr(objref obj, objref key);
QRV_API bool m_assign(cObj &obj, objref &arg);
QRV_API bool m_add(cObj &obj, objref &arg); // appends all values; true
// If the sizes differ, prints both vectors to std::cout.
QRV_API bool m_equal(cObj &obj, objref &arg);
QRV_API bool m_write(cObj &obj, objref &stream);
QRV_API bool m_read(cObj &obj, objref &stream);
} // namespace cTomVector

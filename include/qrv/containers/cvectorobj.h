#pragma once
// cVectorObj, a map whose keys are always the ints 0 to n-1: when a value is removed, those after
// it move down, and the last key is removed. The methods of cTomVector enforce this. append ignores
// entrytype and of_const_keys; setattr does not.

#include "qrv/containers/cmapobj.h"

class QRV_API cVectorObj : public cMapObj {
  public:
    // A copy assigns the values and copies all flags. The constructor from a cObj does not
    // run `create`. RUNS USER CODE
    cVectorObj();
    cVectorObj(cVectorObj const &other);
    explicit cVectorObj(cObj const &other);
    ~cVectorObj() override;
    cVectorObj &operator=(cVectorObj const &other);
    cVectorObj &operator=(cObj const &other);

    // Inserts before this position; a kill value removes the value there. Does not check flags and
    // entry type. False if the position is out of range. RUNS USER CODE
    bool insert(int place, objref const &value);
    // Removes the values at the positions start to start + count - 1 that exist. Always true.
    // RUNS USER CODE
    bool erase(int start, int count);
    // Replaces values by those of `source` that have the type entrytype. The range begins at
    // first = max(start, 0) and ends at end = min(start + count, size). From `first` on, `end`
    // values are removed, which is more than the range has if `first` is above 0. False if `first`
    // is after `end`, or if `source` has no slice. RUNS USER CODE
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
// False if the sizes differ. If they begin to differ during the comparison, because the `equal` of
// a value changes a vector, it also prints both vectors to std::cout.
QRV_API bool m_equal(cObj &obj, objref &arg);
QRV_API bool m_write(cObj &obj, objref &stream);
QRV_API bool m_read(cObj &obj, objref &stream);
} // namespace cTomVector

#pragma once
// Integer objects that remember the form in which they were entered, so that a number stays
// hexadecimal when its file is written again. Their type is "intf", which has the methods of int
// except:
//
//   newobj  a cIntValF of 0 in decimal
//   assign  from an intf copies number and format; from int, bool, float and double only the
//           number; from a string what cIntFormat::set_str parses, all or nothing
//   write   the text of cIntFormat::str(). While a cat::ExactText exists, binary forms have no
//           blanks, and as many bits as the number needs, so that they can be read again
//   read    one word, in double quotes or bare, by cIntFormat::set_str
//
// write2file and cPersistentMap do not use cat::ExactText: they write binary forms with blanks,
// which `read` rejects.
//
// `equal`, `less` and the hash of keys use only the number. The type is created on its first use by
// name, in a file or by cat::type_intf().

#include "qrv/core/cobjd.h"
#include "qrv/util/cintformat.h"

#include <concepts>
#include <optional>

namespace cat {
// The type "intf"; never null. The first call creates it, and registers it if its name is free.
QRV_API cTypeObj &type_intf();

// The number of an int, a float, a double or an "intf", without conversion. Empty for any other
// object and for null; strings are never parsed.
[[nodiscard]] QRV_API std::optional<double> number_of(objref const &ref);
} // namespace cat

// An intf that owns its number.
class QRV_API cIntValF : public cObjD<int>, public cIntFormat {
  public:
    explicit cIntValF(int number, Format format = fmtDec);
    cIntValF(cIntValF const &other); // a separate number; const if the other is
    // Assigns number and format through the type; fails if this is const (0x41400000).
    cIntValF &operator=(cIntValF const &other);
    ~cIntValF() override;

    using cObjD<int>::operator=;
    // Compares with objects of any type, by the number. The comparison of cIntFormat includes the
    // format.
    template <std::derived_from<cObj> T> bool operator==(T const &other) const {
        return equal(other);
    }
    template <std::derived_from<cObj> T> bool operator!=(T const &other) const {
        return !equal(other);
    }
};

// An intf whose number is stored elsewhere and must outlive it. It has its own format.
class QRV_API cIntRefF : public cObjDR<int>, public cIntFormat {
  public:
    cIntRefF(int &number, Format format);    // borrows the number
    cIntRefF(int const &&, Format) = delete; // would dangle
    cIntRefF(cIntRefF const &other);         // refers to the same number; const if the other is
    // Assigns number and format through the type, as cIntValF does.
    cIntRefF &operator=(cIntRefF const &other);
    ~cIntRefF() override;

    using cObjDR<int>::operator=;
    // As in cIntValF.
    template <std::derived_from<cObj> T> bool operator==(T const &other) const {
        return equal(other);
    }
    template <std::derived_from<cObj> T> bool operator!=(T const &other) const {
        return !equal(other);
    }
};

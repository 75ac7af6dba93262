#pragma once
// Integer objects that remember the form in which they were entered, so that a file with a number
// in hexadecimal keeps it so. Their type is "intf", which has the methods of int but for:
//
//   newobj  a cIntValF of 0 in decimal
//   assign  from an intf the number and the format; from int, bool, float and double the number,
//           and the format stays; from a string what cIntFormat::set_str takes, else nothing
//   write   the text of cIntFormat::str(). While a cat::ExactText lives binary forms have no
//           blanks, and as many bits as the number needs, so that they read back
//   read    one word, in double quotes or bare, by cIntFormat::set_str
//
// Plain text, and so write2file and cPersistentMap without that guard, writes bits with blanks,
// which `read` refuses.
//
// `equal`, `less` and the hash of keys look at the number alone. The type is made when it is first
// named, in a file or by cat::type_intf().

#include "qrv/core/cobjd.h"
#include "qrv/util/cintformat.h"

#include <concepts>
#include <optional>

namespace cat {
// The type "intf"; never null. Made, and registered if its name is free, at the first call.
QRV_API cTypeObj &type_intf();

// The number of an int, a float, a double or an "intf", without any conversion. Empty for anything
// else and for null; text is never parsed.
[[nodiscard]] QRV_API std::optional<double> number_of(objref const &ref);
} // namespace cat

// Owns its number.
class QRV_API cIntValF : public cObjD<int>, public cIntFormat {
  public:
    explicit cIntValF(int number, Format format = fmtDec);
    cIntValF(cIntValF const &other); // a number of its own; const if the other is
    // Through the type: number and format, unless this is const (0x41400000).
    cIntValF &operator=(cIntValF const &other);
    ~cIntValF() override;

    using cObjD<int>::operator=;
    // As objects, of any type: the number counts. As cIntFormat the format counts too.
    template <std::derived_from<cObj> T> bool operator==(T const &other) const {
        return equal(other);
    }
    template <std::derived_from<cObj> T> bool operator!=(T const &other) const {
        return !equal(other);
    }
};

// Refers to a number that lives elsewhere and must outlive it. Its format is its own.
class QRV_API cIntRefF : public cObjDR<int>, public cIntFormat {
  public:
    cIntRefF(int &number, Format format);
    cIntRefF(int const &&, Format) = delete; // would dangle
    cIntRefF(cIntRefF const &other);         // refers to the same number; const if the other is
    cIntRefF &operator=(cIntRefF const &other);
    ~cIntRefF() override;

    using cObjDR<int>::operator=;
    template <std::derived_from<cObj> T> bool operator==(T const &other) const {
        return equal(other);
    }
    template <std::derived_from<cObj> T> bool operator!=(T const &other) const {
        return !equal(other);
    }
};

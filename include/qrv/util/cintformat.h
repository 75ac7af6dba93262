#pragma once
// cIntFormat: an int with the form in which it is written. It is a view: the number is stored
// elsewhere and must outlive it. The text does not depend on a locale. These functions throw only
// std::bad_alloc.

#include "qrv/ccomp.h"

#include <string>

class QRV_API cIntFormat {
  public:
    enum Format : int {
        fmtDec,   // -12
        fmtHex,   // 0x1f
        fmtHEX,   // 0x1F
        fmtOct,   // 017
        fmtBin8,  // b 0000 0101
        fmtBin16, // the same with 16 bits
        fmtBin32  // and with 32
    };

    // Borrows the number.
    cIntFormat(int &number, Format format) noexcept : value_(&number), format_(format) {}
    cIntFormat(int const &&, Format) = delete; // would dangle
    // A second view of the same number.
    cIntFormat(cIntFormat const &) noexcept = default;
    // Assigns the number through the pointer, which is unchanged, and copies the format.
    cIntFormat &operator=(cIntFormat const &other) noexcept {
        *value_ = *other.value_;
        format_ = other.format_;
        return *this;
    }
    ~cIntFormat() = default;

    int value() const noexcept { return *value_; }
    void set_value(int number) noexcept { *value_ = number; }
    Format format() const noexcept { return format_; }
    void set_format(Format format) noexcept { format_ = format; } // an unknown one acts as fmtDec

    // Same number and same format.
    bool operator==(cIntFormat const &other) const noexcept {
        return *value_ == *other.value_ && format_ == other.format_;
    }
    bool operator!=(cIntFormat const &other) const noexcept { return !(*this == other); }

    // Parses number and format; ignores white space around them:
    //   b or B, then 1 to 32 bits, blanks between them allowed   the smallest binary form that fits
    //   0x and up to 8 digits   fmtHex if most letters are small, fmtHEX if most are capitals; if
    //                           neither, fmtHex stays, and any other format becomes fmtHEX
    //   0 and octal digits      fmtOct
    //   digits, maybe a sign    fmtDec. A 0 after the sign makes the digits octal, up to the first
    //                           character that is not an octal digit
    // Of a number with more than 32 bits, the lowest 32 become the int. For null and for any other
    // text, the result is false and the number is unchanged. So is the format, unless the text is a
    // sign or 0x without a digit.   O(length)
    bool set_str(char const *text);

    // The text in the current format. Negative numbers show their 32 bits, except in decimal. A
    // binary form omits the bits beyond its width: see set_str for what it parses.
    std::string str() const;

  private:
    int *value_;
    Format format_;
};

#pragma once
// cIntFormat: an int together with the form in which it is written. It is a view: the number lies
// elsewhere and must outlive it. Text depends on no locale. Nothing here throws but for want of
// memory.

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
    // A second view on the same number.
    cIntFormat(cIntFormat const &) noexcept = default;
    // Writes the number through the pointer, which stays, and copies the format.
    cIntFormat &operator=(cIntFormat const &other) noexcept {
        *value_ = *other.value_;
        format_ = other.format_;
        return *this;
    }
    ~cIntFormat() = default;

    int value() const noexcept { return *value_; }
    void set_value(int number) noexcept { *value_ = number; }
    Format format() const noexcept { return format_; }
    void set_format(Format format) noexcept { format_ = format; } // an unknown one is as fmtDec

    // Same number and same format.
    bool operator==(cIntFormat const &other) const noexcept {
        return *value_ == *other.value_ && format_ == other.format_;
    }
    bool operator!=(cIntFormat const &other) const noexcept { return !(*this == other); }

    // Takes number and format from a text; white space around it doesn't count:
    //   b or B, then 1 to 32 bits, blanks between them allowed   the smallest binary form that fits
    //   0x and up to 8 digits   fmtHex or fmtHEX by the letters that are more; where they balance
    //                           fmtHex stays, and all else becomes fmtHEX
    //   0 and octal digits      fmtOct
    //   a sign and digits       fmtDec. A 0 behind the sign makes the digits octal, up to the first
    //                           that is none
    // What is larger than 32 bits is taken modulo 2^32; bits land in the int as they are.
    // False, and the number stays, for anything else and for null. The format stays too, but for a
    // sign or 0x without a digit, which have set it already.   O(length)
    bool set_str(char const *text);

    // The text in the present format. Negative numbers show their 32 bits, but in decimal. Bits
    // beyond the width of a binary form aren't shown: see set_str for what reads back.
    std::string str() const;

  private:
    int *value_;
    Format format_;
};

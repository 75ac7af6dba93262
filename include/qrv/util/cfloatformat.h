#pragma once
// cFloatFormat and cDoubleFormat: a floating-point number with the notation and the precision in
// which it is written. Both are views: the number is stored elsewhere and must outlive them. The
// text does not depend on a locale. These functions throw only std::bad_alloc.

#include "qrv/ccomp.h"

#include <string>

class QRV_API cFormatFloating {
  public:
    enum Format : int { ffFixed, ffGeneral, ffScientific };

    // The meaning of the precision: see precision().
    cFormatFloating(Format format, short precision) noexcept
        : format_(format), precision_(precision) {}
    cFormatFloating(cFormatFloating const &) noexcept = default;
    cFormatFloating &operator=(cFormatFloating const &) noexcept = default;
    ~cFormatFloating() = default;

    Format format() const noexcept { return format_; }
    // An unknown format writes fixed notation, and set_str() then fails.
    void set_format(Format format) noexcept { format_ = format; }
    // Digits after the point; in general notation all digits. A value below 0 counts as 6.
    short precision() const noexcept { return precision_; }
    void set_precision(short precision) noexcept { precision_ = precision; }

  private:
    Format format_;
    short precision_;
};

class QRV_API cFloatFormat : public cFormatFloating {
  public:
    // Borrows the number.
    cFloatFormat(float &number, Format format, short precision) noexcept
        : cFormatFloating(format, precision), value_(&number) {}
    cFloatFormat(float const &&, Format, short) = delete;  // would dangle
    cFloatFormat(cFloatFormat const &) noexcept = default; // a second view of the same number
    // Assigns the number through the pointer, which is unchanged, and copies format and precision.
    cFloatFormat &operator=(cFloatFormat const &other) noexcept {
        cFormatFloating::operator=(other);
        *value_ = *other.value_;
        return *this;
    }
    ~cFloatFormat() = default;

    float value() const noexcept { return *value_; }
    // Writes the number that is stored elsewhere.
    void set_value(float number) noexcept { *value_ = number; }

    // Parses a number at the start of the string, in the same way for all formats: white space, a
    // sign, and decimal digits with point and exponent, or 0x and hexadecimal digits with exponent
    // p, or inf, infinity, nan in any case. The rest of the string is ignored. Too large numbers
    // become infinite, too small ones 0. Returns false and leaves the number unchanged if the
    // string has no number, is null, or the format is unknown.
    bool set_str(char const *text);
    // `changed` reports whether the number read differs from the old one. A NaN differs from all.
    // On failure `changed` is false.
    bool set_str(char const *text, bool &changed);
    // In the current notation, always with a point. Infinity and NaN are `inf` and `nan`.
    std::string str() const;

  private:
    float *value_;
};

class QRV_API cDoubleFormat : public cFormatFloating {
  public:
    // Borrows the number.
    cDoubleFormat(double &number, Format format, short precision) noexcept
        : cFormatFloating(format, precision), value_(&number) {}
    cDoubleFormat(double const &&, Format, short) = delete;
    cDoubleFormat(cDoubleFormat const &) noexcept = default; // a second view of the same number
    // Assigns the number through the pointer, which is unchanged, and copies format and precision.
    cDoubleFormat &operator=(cDoubleFormat const &other) noexcept {
        cFormatFloating::operator=(other);
        *value_ = *other.value_;
        return *this;
    }
    ~cDoubleFormat() = default;

    double value() const noexcept { return *value_; }
    // Writes the number that is stored elsewhere.
    void set_value(double number) noexcept { *value_ = number; }

    // Like cFloatFormat. DELIBERATE: the number passes through a float, so it has single precision
    // and a float's range.   Pinned: a_double_from_text_has_single_precision
    bool set_str(char const *text);
    bool set_str(char const *text, bool &changed); // compares as double
    std::string str() const;

  private:
    double *value_;
};

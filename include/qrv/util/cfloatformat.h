#pragma once
// cFloatFormat and cDoubleFormat: a floating number together with the notation and the precision
// in which it is written. Both are views: the number lies elsewhere and must outlive them. Text
// depends on no locale. Nothing here throws but for want of memory.

#include "qrv/ccomp.h"

#include <string>

class QRV_API cFormatFloating {
  public:
    enum Format : int { ffFixed, ffGeneral, ffScientific };

    cFormatFloating(Format format, short precision) noexcept
        : format_(format), precision_(precision) {}
    cFormatFloating(cFormatFloating const &) noexcept = default;
    cFormatFloating &operator=(cFormatFloating const &) noexcept = default;
    ~cFormatFloating() = default;

    Format format() const noexcept { return format_; }
    // An unknown one writes fixed notation and refuses to be set from text.
    void set_format(Format format) noexcept { format_ = format; }
    // Digits behind the point, in general notation all digits. Below 0 it is taken as 6.
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
    cFloatFormat(cFloatFormat const &) noexcept = default; // a second view on the same number
    // Writes the number through the pointer, which stays, and copies format and precision.
    cFloatFormat &operator=(cFloatFormat const &other) noexcept {
        cFormatFloating::operator=(other);
        *value_ = *other.value_;
        return *this;
    }
    ~cFloatFormat() = default;

    float value() const noexcept { return *value_; }
    void set_value(float number) noexcept { *value_ = number; }

    // Takes the number from the start of a text, the same for all formats: white space, a sign, and
    // decimal digits with point and exponent, hexadecimal ones behind 0x with exponent p, or inf,
    // infinity, nan in any case. What follows isn't looked at. Too large is infinite, too small 0.
    // False, and the number stays, if there is none, for null, and with an unknown format.
    bool set_str(char const *text);
    // `changed`: whether a number was read that differs from the former. A NaN differs from all.
    bool set_str(char const *text, bool &changed);
    // In the present notation, always with a point. Infinity and NaN are `inf` and `nan`.
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
    cDoubleFormat(cDoubleFormat const &) noexcept = default; // a second view on the same number
    // Writes the number through the pointer, which stays, and copies format and precision.
    cDoubleFormat &operator=(cDoubleFormat const &other) noexcept {
        cFormatFloating::operator=(other);
        *value_ = *other.value_;
        return *this;
    }
    ~cDoubleFormat() = default;

    double value() const noexcept { return *value_; }
    void set_value(double number) noexcept { *value_ = number; }

    // As for cFloatFormat. DELIBERATE: the number passes through a float, so it has single
    // precision and a float's range.   Pinned: a_double_from_text_has_single_precision
    bool set_str(char const *text);
    bool set_str(char const *text, bool &changed); // compares as doubles
    std::string str() const;

  private:
    double *value_;
};

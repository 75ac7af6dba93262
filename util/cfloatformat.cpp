// The notation matters only for writing: reading treats all three forms alike.

#include "qrv/util/cfloatformat.h"

#include "base/cnumber.h"

#include <ios>
#include <locale>
#include <sstream>
#include <type_traits>

static_assert(sizeof(cFormatFloating) == 8 && std::is_standard_layout_v<cFormatFloating>);
static_assert(sizeof(cFloatFormat) == 16 && !std::is_polymorphic_v<cFloatFormat>);
static_assert(sizeof(cDoubleFormat) == 16 && !std::is_polymorphic_v<cDoubleFormat>);

namespace {
bool is_known(cFormatFloating::Format format) noexcept {
    return format >= cFormatFloating::ffFixed && format <= cFormatFloating::ffScientific;
}

// General notation sets neither bit: both together would mean hexadecimal.
std::ios_base::fmtflags float_field(cFormatFloating::Format format) noexcept {
    switch (format) {
    case cFormatFloating::ffGeneral:
        return std::ios_base::fmtflags();
    case cFormatFloating::ffScientific:
        return std::ios_base::scientific;
    case cFormatFloating::ffFixed:
    default:
        return std::ios_base::fixed;
    }
}

template <class T> std::string text_of(cFormatFloating const &format, T number) {
    std::ostringstream os;
    os.imbue(std::locale::classic());
    os.setf(std::ios_base::showpoint);
    os.setf(float_field(format.format()), std::ios_base::floatfield);
    os.precision(format.precision());
    os << number;
    return os.str();
}

template <class T>
bool set_number(cFormatFloating const &format, char const *text, T &number, bool &changed) {
    changed = false;
    float read = 0;
    if (!text || !is_known(format.format()) || !cat::scan_real(text, read)) return false;
    T const value = read;
    changed = value != number;
    number = value;
    return true;
}
} // namespace

bool cFloatFormat::set_str(char const *text, bool &changed) {
    return set_number(*this, text, *value_, changed);
}

bool cFloatFormat::set_str(char const *text) {
    bool changed = false;
    return set_str(text, changed);
}

std::string cFloatFormat::str() const { return text_of(*this, *value_); }

bool cDoubleFormat::set_str(char const *text, bool &changed) {
    return set_number(*this, text, *value_, changed);
}

bool cDoubleFormat::set_str(char const *text) {
    bool changed = false;
    return set_str(text, changed);
}

std::string cDoubleFormat::str() const { return text_of(*this, *value_); }

// Creating values, their kinds, and reading them.

#include "qrv/value/value.h"

#include "value/place.h"

#include "qrv/core/cobjd.h"
#include "qrv/core/ctypes.h"
#include "qrv/diagnostics/ccaughterrors.h"
#include "qrv/text/write/cexacttext.h"
#include "qrv/text/write/cwriter.h"

#include <array>
#include <cmath>
#include <ostream>

namespace qrv {

char const *name_of(kind which) noexcept {
    constexpr std::array names{"nil",    "bool", "int",    "float", "double",
                               "string", "map",  "vector", "set",   "object"};
    return names.at(static_cast<std::size_t>(which));
}

// --- creating

namespace {

using detail::data_of;

objref checked(objref object) {
    if (!object || object == cat::nil()) return nullptr;
    if (cObj::is_bad(object))
        throw std::invalid_argument("cat::bad() and cat::badfind() are not values");
    return object;
}

} // namespace

value::value(float number) : object_(cat::of(number)) {}
value::value(double number) : object_(cat::of(number)) {}
value::value(long double number) {
    if (std::isfinite(number) && std::fabs(number) > std::numeric_limits<double>::max())
        refuse_number(std::to_string(number), "a double");
    object_ = cat::of(static_cast<double>(number));
}
value::value(std::string text) : object_(cat::of(text)) {}
value::value(std::string_view text) : object_(cat::of(std::string(text))) {}
value::value(char const *text) : object_(text ? cat::of(text) : nullptr) {}
value::value(objref object) : object_(checked(std::move(object))) {}

objref value::make(bool truth) { return cat::of(truth); }
objref value::make(int number) { return cat::of(number); }

void value::refuse_number(std::string const &number, char const *where) {
    throw range_error({}, number + " does not fit in " + where);
}

// --- kinds

qrv::kind value::kind() const noexcept {
    if (!object_) return kind::nil;
    cTypeObj const *const type = &object_->type();
    switch (object_->object_class()) {
    case cObjClass::boolean:
        return type == &cat::type_bool() ? kind::boolean : kind::object;
    case cObjClass::integer:
        return type == &cat::type_int() ? kind::integer : kind::object;
    case cObjClass::float_number:
        return type == &cat::type_float() ? kind::float_number : kind::object;
    case cObjClass::double_number:
        return type == &cat::type_double() ? kind::double_number : kind::object;
    case cObjClass::string:
        return type == &cat::type_string() ? kind::string : kind::object;
    case cObjClass::map:
        if (type == &cat::type_map()) return kind::map;
        if (type == &cat::type_vector()) return kind::vector;
        return type == &cat::type_set() ? kind::set : kind::object;
    default:
        return kind::object;
    }
}

bool value::is_container() const noexcept { return cat::as_map(object_) != nullptr; }

std::string value::type_name() const {
    return (object_ ? object_->type() : cat::type_nil()).name();
}

objref value::object() const { return object_ ? object_ : cat::nil(); }

// --- errors

std::string detail::shown_text(objref const &object, bool *is_whole) {
    {
        cat::CaughtErrors const caught;
        cat::ExactText const exact;
        std::string text = cat::as_text(object);
        if (exact.failed() == 0 && caught.empty()) return text;
    }
    cat::CaughtErrors const caught;
    std::string text = cat::as_text(object);
    if (is_whole) *is_whole = caught.empty();
    return text;
}

namespace {

// The text of a scalar for a message; long text is cut.
std::string short_text(objref const &object) {
    constexpr std::size_t most = 60;
    std::string text = detail::shown_text(object);
    if (text.size() > most) text = text.substr(0, most) + "...";
    return text;
}

} // namespace

std::string detail::description(value const &v) {
    switch (v.kind()) {
    case kind::nil:
        return "nil";
    case kind::integer:
        return "an int: " + short_text(v.object());
    case kind::map:
    case kind::vector:
    case kind::set:
        return std::string("a ") + name_of(v.kind());
    case kind::object:
        return "an object of type " + v.type_name();
    default: {
        std::string text = short_text(v.object());
        if (v.is_string() && text[0] != '"') text = '"' + text + '"'; // always in quotes
        return std::string("a ") + name_of(v.kind()) + ": " + text;
    }
    }
}

void value::refuse_type(cObj *object, std::string_view path, char const *expected) {
    throw type_error(std::string(path), expected,
                     detail::description(detail::value_of(objref::share(object))));
}

void value::refuse_range(cObj *object, std::string_view path, long long least,
                         unsigned long long most) {
    throw range_error(std::string(path), short_text(objref::share(object)) +
                                             " does not fit: the range is " +
                                             std::to_string(least) + " to " + std::to_string(most));
}

void value::refuse_float(cObj *object, std::string_view path) {
    throw range_error(std::string(path),
                      short_text(objref::share(object)) + " does not fit in a float");
}

// --- reading

namespace {

template <class T> detail::outcome read_whole(double number, T &to) {
    if (std::trunc(number) != number || std::isinf(number)) return detail::outcome::wrong_type;
    // A double represents both limits exactly: each is a power of two, a negative one, or 0.
    double const end = std::ldexp(1.0, std::numeric_limits<T>::digits);
    if (number >= end || number < static_cast<double>(std::numeric_limits<T>::min()))
        return detail::outcome::misfit;
    to = static_cast<T>(number);
    return detail::outcome::good;
}

template <class T> detail::outcome read_integer(cObj const *object, T &to) {
    if (!object) return detail::outcome::wrong_type;
    switch (object->object_class()) {
    case cObjClass::integer: {
        int const number = data_of<int>(*object);
        to = static_cast<T>(number);
        return std::in_range<T>(number) ? detail::outcome::good : detail::outcome::misfit;
    }
    case cObjClass::float_number:
        return read_whole(data_of<float>(*object), to);
    case cObjClass::double_number:
        return read_whole(data_of<double>(*object), to);
    default:
        break;
    }
    int const key = cat::as_index(detail::choice_key_of(object));
    if (key == cat::no_index) return detail::outcome::wrong_type;
    to = static_cast<T>(key);
    return std::in_range<T>(key) ? detail::outcome::good : detail::outcome::misfit;
}

} // namespace

detail::outcome value::read(cObj const *object, bool &to) noexcept {
    if (!object || object->object_class() != cObjClass::boolean) return detail::outcome::wrong_type;
    to = data_of<bool>(*object);
    return detail::outcome::good;
}

detail::outcome value::read(cObj const *object, int &to) { return read_integer(object, to); }
detail::outcome value::read(cObj const *object, long long &to) { return read_integer(object, to); }
detail::outcome value::read(cObj const *object, unsigned long long &to) {
    return read_integer(object, to);
}

detail::outcome value::read(cObj const *object, double &to) noexcept {
    if (!object) return detail::outcome::wrong_type;
    switch (object->object_class()) {
    case cObjClass::integer:
        to = data_of<int>(*object);
        return detail::outcome::good;
    case cObjClass::float_number:
        to = data_of<float>(*object);
        return detail::outcome::good;
    case cObjClass::double_number:
        to = data_of<double>(*object);
        return detail::outcome::good;
    default:
        return detail::outcome::wrong_type;
    }
}

detail::outcome value::read(cObj const *object, float &to) noexcept {
    double number = 0;
    if (read(object, number) != detail::outcome::good) return detail::outcome::wrong_type;
    if (std::isfinite(number) && std::fabs(number) > std::numeric_limits<float>::max())
        return detail::outcome::misfit; // converting it would be undefined
    to = static_cast<float>(number);
    if (to == 0 && number != 0) return detail::outcome::misfit;
    bool const rounded = !std::isnan(number) && static_cast<double>(to) != number;
    bool const is_int = object->object_class() == cObjClass::integer;
    return rounded && is_int ? detail::outcome::wrong_type : detail::outcome::good;
}

detail::outcome value::read(cObj const *object, std::string &to) {
    if (!object) return detail::outcome::wrong_type;
    objref const key = detail::choice_key_of(object);
    cObj const &text = key ? *key : *object;
    if (text.object_class() != cObjClass::string) return detail::outcome::wrong_type;
    to = data_of<std::string>(text);
    return detail::outcome::good;
}

bool value::locate(std::string_view path, detail::spot &to) const {
    detail::path_reader keys(path);
    return detail::walk(object_, keys, to);
}

std::optional<value> value::find(std::string_view path) const { return get<value>(path); }

value value::at(std::string_view path) const {
    std::optional<value> found = find(path);
    if (!found) throw path_error(std::string(path), "nothing is there");
    return *std::move(found);
}

std::optional<value> value::find_key(detail::step const &key) const {
    if (!object_) return std::nullopt;
    detail::step found_as = key;
    objref keep;
    cObj *const found = detail::entry_of(*object_, found_as, keep);
    if (!found) return std::nullopt;
    return detail::value_of(objref::share(found));
}

value value::at_key(detail::step const &key) const {
    std::optional<value> found = find_key(key);
    if (found) return *std::move(found);
    std::string path;
    detail::append_key(path, key);
    throw path_error(path, "nothing is there");
}

bool value::contains_key(detail::step const &key) const { return find_key(key).has_value(); }

std::size_t value::size() const {
    if (!object_) return 0;
    cMapObj const *const map = cat::as_map(object_);
    if (!map) refuse_type(object_, {}, "a container");
    return map->datamap().used();
}

std::ostream &operator<<(std::ostream &os, value const &v) {
    bool is_whole = true;
    os << detail::shown_text(v.object(), &is_whole);
    if (!is_whole) os.setstate(std::ios_base::failbit);
    return os;
}

} // namespace qrv

// Comparing and hashing values.
//
// Numbers are compared as C++ does, so a NaN equals nothing, and -0.0 equals 0.0. Inside containers
// the library compares.

#include "value/guard.h"
#include "value/place.h"

#include "qrv/core/cobjd.h"

#include <functional>

namespace qrv {
namespace {

using detail::data_of;

// Compares objects other than scalars, by the methods of their type.
bool equal_objects(cObj const &a, cObj const &b) {
    return detail::guarded([&] { return a.equal(b); });
}

std::partial_ordering order_objects(cObj const &a, cObj const &b) {
    if (&a == &b || equal_objects(a, b)) return std::partial_ordering::equivalent;
    if (&a.type() != &b.type() || !a.type().method(mid_less))
        return std::partial_ordering::unordered;
    return detail::guarded([&] {
        if (a.less(b)) return std::partial_ordering::less;
        return b.less(a) ? std::partial_ordering::greater : std::partial_ordering::unordered;
    });
}

} // namespace

bool value::equals(value const &other) const {
    if (object_ && other.object_ && kind() == kind::object)
        return object_ == other.object_ || equal_objects(*object_, *other.object_);
    return std::is_eq(order(other));
}

std::partial_ordering value::order(value const &other) const {
    qrv::kind const which = kind();
    if (which != other.kind()) return std::partial_ordering::unordered;
    switch (which) {
    case kind::nil:
        return std::partial_ordering::equivalent;
    case kind::boolean:
        return order(data_of<bool>(*other.object_));
    case kind::integer:
        return order(static_cast<long long>(data_of<int>(*other.object_)));
    case kind::float_number:
        return order(data_of<float>(*other.object_));
    case kind::double_number:
        return order(static_cast<long double>(data_of<double>(*other.object_)));
    case kind::string:
        return order(std::string_view(data_of<std::string>(*other.object_)));
    default:
        return order_objects(*object_, *other.object_);
    }
}

std::partial_ordering value::order(bool truth) const noexcept {
    if (!is_bool()) return std::partial_ordering::unordered;
    return data_of<bool>(*object_) <=> truth;
}

std::partial_ordering value::order(long long number) const noexcept {
    if (!is_int()) return std::partial_ordering::unordered;
    return data_of<int>(*object_) <=> number;
}

std::partial_ordering value::order(float number) const noexcept {
    if (!is_float()) return std::partial_ordering::unordered;
    return data_of<float>(*object_) <=> number;
}

std::partial_ordering value::order(long double number) const noexcept {
    if (!is_double()) return std::partial_ordering::unordered;
    return static_cast<long double>(data_of<double>(*object_)) <=> number;
}

// A choice has no order, but it equals the text of its key.
std::partial_ordering value::order(std::string_view text) const {
    if (is_string()) return std::string_view(data_of<std::string>(*object_)) <=> text;
    objref const key = detail::choice_key_of(object_);
    return key && key->object_class() == cObjClass::string && data_of<std::string>(*key) == text
               ? std::partial_ordering::equivalent
               : std::partial_ordering::unordered;
}

std::size_t value::hash() const {
    switch (kind()) {
    case kind::nil:
        return 0;
    case kind::boolean:
        return std::hash<bool>{}(data_of<bool>(*object_));
    case kind::integer:
        return std::hash<int>{}(data_of<int>(*object_));
    case kind::float_number:
        return std::hash<float>{}(data_of<float>(*object_));
    case kind::double_number:
        return std::hash<double>{}(data_of<double>(*object_));
    case kind::string:
        return std::hash<std::string>{}(data_of<std::string>(*object_));
    default:
        break;
    }
    if (!object_->type().is_keytype()) refuse_type(object_, {}, "what can be a key");
    return object_->type().hashfun(object_);
}

} // namespace qrv

// The number of an object of any numeric type of the library.

#include "qrv/util/cintvalf.h"

#include "core/cscalar.h"
#include "util/cintf_type.h"

namespace {

template <class T> std::optional<double> as_double(cObj const *obj) {
    T const *const value = cat::value_in<T>(obj);
    return value ? std::optional<double>(*value) : std::nullopt;
}

} // namespace

std::optional<double> cat::number_of(objref const &ref) {
    if (!ref) return std::nullopt;
    cTypeObj const *const type = &ref->type();
    if (type == &type_int() || is_intf_type(type)) return as_double<int>(ref);
    if (type == &type_float()) return as_double<float>(ref);
    if (type == &type_double()) return as_double<double>(ref);
    return std::nullopt;
}

#pragma once
// The kinds of a qrv::value.

#include "qrv/ccomp.h"

#include <cstdint>

namespace qrv {

// What a value is. A container that is not exactly of type map, vector or set, such as an object of
// a declared type, is an `object`, and so are choices, numbers with a format, types and functions.
enum class kind : std::uint8_t {
    nil,
    boolean,
    integer,
    float_number,
    double_number,
    string,
    map,
    vector,
    set,
    object
};

// "nil", "bool", "int", "float", "double", "string", "map", "vector", "set", "object". Borrowed;
// never null and never destroyed.
QRV_API char const *name_of(kind which) noexcept;

} // namespace qrv

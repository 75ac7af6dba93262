#pragma once
// The stream argument of a method `read` or `write`, taken from its holder; null if it is missing.

#include "qrv/core/cobjd.h"

#include <iosfwd>

inline std::ostream *out_of(objref const &stream) {
    auto const *const holder = dynamic_cast<cOutHolder const *>(stream.get());
    return holder ? holder->valptr() : nullptr;
}

inline std::istream *in_of(objref const &stream) {
    auto const *const holder = dynamic_cast<cInHolder const *>(stream.get());
    return holder ? holder->valptr() : nullptr;
}

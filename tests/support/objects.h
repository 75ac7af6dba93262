#pragma once
// Objects, types and methods that tests of several folders need.

#include "qrv/containers/cattspec.h"
#include "qrv/containers/cmapobj.h"
#include "qrv/core/cobjd.h"
#include "qrv/core/ctypes.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

namespace test {

inline objref key(char const *text) { return own_key(std::string(text)); }

template <class T> T &val(objref const &ref) { return static_cast<cObjDR<T> &>(*ref).val(); }

inline specref spec_with(objref const &value, int flags = 0) {
    return specref::adopt(new cAttspec(value, flags));
}

inline objref read(std::string const &text) {
    objref value;
    EXPECT_EQ(cObj::readobj(text.c_str(), value), 0) << text;
    return value;
}

inline bool is_known(char const *name) { return &cat::find_type(name) != &cat::type_nil(); }

// --- methods of types ---

inline bool procedure_1(cObj &) { return true; }
inline bool accept(cObj &, objref &) { return true; }
inline objref no_args() { return cat::nil(); }
inline objref new_bad(objref) { return cat::bad(); }
inline objref new_throwing(objref) { throw std::runtime_error("no"); }
inline objref new_own(objref type) {
    return make<cMapObj>(dynamic_cast<cTypeObj *>(type.get()), true);
}

} // namespace test

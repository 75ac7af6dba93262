#pragma once
// Types that are like another one.

#include "qrv/core/ctypeobj.h"

namespace cat {

// Makes `type` a type like `base`: shares base's members and converters, converts from base, uses
// base's key hooks unless it has its own (the first cTypeObj::set_hash wins), and copies its flags
// except tf_bare, so that objects are written as name(...). `newobj` creates an object by
// base.newobj(), which runs base's `create`, and sets this type. The member "base" keeps the base
// alive. Later settings change only `type`:
//
//     typeref const type = make<cTypeObj>("port", [](cTypeObj &port) {
//         cat::derive_from(port, cat::type_int());
//         port.set_tmember("setattr", make<cExeMember>(refuse));
//     });
//
// Not copied: name, metatype and registration, own members of the type object, and later changes of
// base. False, without any change, if `base` is `type` or derived from it.
QRV_API bool derive_from(cTypeObj &type, cTypeObj &base);

} // namespace cat

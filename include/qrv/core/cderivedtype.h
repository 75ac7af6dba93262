#pragma once
// Types like another one, in one step.

#include "qrv/core/ctypeobj.h"

namespace cat {

// Makes the type one like `base`: shares its members and converters, converts from base, takes over
// its key hooks if it has none of its own (the first cTypeObj::set_hash wins), and its flags but
// tf_bare, so that its objects are written as name(...). Its `newobj` makes an object as base does,
// runs base's `create`, and gives the object this type. The base is kept alive, as the member
// "base". What is set afterwards is the type's own:
//
//     typeref const type = make<cTypeObj>("port", [](cTypeObj &port) {
//         cat::derive_from(port, cat::type_int());
//         port.set_tmember("setattr", make<cExeMember>(refuse));
//     });
//
// Not copied: name, metatype and registration, own members of the type object, and what is changed
// in base later. False, and nothing is changed, for the type itself and what it is derived from.
QRV_API bool derive_from(cTypeObj &type, cTypeObj &base);

} // namespace cat

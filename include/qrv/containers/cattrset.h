#pragma once
// Attribute sets: declared records. A type of the metatype "attlist" has one attribute
// specification for each key, in its type member "attspec". Its objects are cMapObj that get all
// declared keys when they are created and refuse all others. As text:
//
//     Pixel= attlist(x= attspec(type= int; flag= #REQUIRED); y= attspec(default= 0););
//     p= Pixel(x= 3);
//
// cTomMap::setattr and getattr enforce the attspec of a key; validate() checks a whole
// object. An object is read and assigned completely or not at all. It uses the specifications that
// its type had when the object was created: later changes of the type do not affect it.
//
// validate() compares #FIXED attributes by identity, and a new object has private copies of the
// defaults. So a new object of a type with a #FIXED attribute is not valid, and no object of such a
// type can be read.

#include "qrv/containers/cattspec.h"

// Methods of the objects of such types.
namespace cTomAttrset {
QRV_API objref newobj(objref type); // cat::bad() for a type of another metatype
// Inserts all declared keys in their order, with a private copy of the default or nil; then refuses
// other keys. False if obj is not a cMapObj.
QRV_API bool create(cObj &obj);
// False at the first attribute that is not declared, that is required and void, or that has another
// type than its fixed one or another object than its #FIXED default. RUNS USER CODE   O(size)
QRV_API bool validate(cObj &obj);
// Copies the attributes that are not void; nothing unless arg is valid. False for a null arg.
//   0x41000000 "Method 'assign' called from other type: " and the type of arg
//   0x41000000 "VALIDATE ERROR in method 'assign'", "ERROR in method 'assign'"
QRV_API bool m_assign(cObj &obj, objref &arg);
// Reads entries without brackets; obj is unchanged unless all of them are valid.
//   0x40000000 "Validate error in read of type: " and the type's name
QRV_API bool m_read(cObj &obj, objref &stream);
} // namespace cTomAttrset

// Methods of these types themselves.
namespace cTomAttlist {
QRV_API objref newobj(objref metatype); // a type without a name and without attributes
QRV_API bool create(cObj &type);        // adds the methods and an empty "attspec" to a new type
// The specifications of arg replace those of the type; other values are ignored. Fires `changed`.
// False if `type` is not such a type or arg is null.
QRV_API bool m_assign(cObj &type, objref &arg);
// These operate on the member "attspec". setattr fires `changed` if it succeeds.
QRV_API bool setattr(cObj &type, objref &key, objref &value);
QRV_API objref getattr(objref type, objref key);
QRV_API objref iterobj(objref type);
// Write and read text; `stream` is a holder of the stream (cOutHolder, cInHolder).
QRV_API bool m_write(cObj &type, objref &stream);
QRV_API bool m_read(cObj &type, objref &stream); // replaces all; always fires `changed`
} // namespace cTomAttlist

#pragma once
// Attribute sets: records that are declared. A type of the metatype "attlist" keeps one attribute
// specification for each key, in its type member "attspec"; its objects are cMapObj that get all
// declared keys when they are made and refuse all others. As text:
//
//     Pixel= attlist(x= attspec(type= int; flag= #REQUIRED); y= attspec(default= 0););
//     p= Pixel(x= 3);
//
// What a key's specification asks for is enforced by cTomMap::setattr and getattr; validate() asks
// it of a whole object. Reading and assigning are all or nothing. An object keeps the
// specifications as of its making: a later change of the type doesn't reach it.
//
// Two consequences of validate() going by identity for #FIXED: an object fresh from its type, whose
// defaults are private copies, doesn't pass it when its type has a #FIXED attribute, and so no
// object of such a type can be read.

#include "qrv/containers/cattspec.h"

// What the types of the metatype "attlist" give to their objects.
namespace cTomAttrset {
QRV_API objref newobj(objref type); // cat::bad() for a type of another metatype
// All declared keys, in their order, with a private copy of the default or nil; then no others.
QRV_API bool create(cObj &obj);
// False at the first attribute that isn't declared, is required and void, has another type than its
// fixed one, or another object than its #FIXED default.   O(size)
QRV_API bool validate(cObj &obj);
// Copies the attributes that aren't void; nothing unless arg is valid.
//   0x41000000 "Method 'assign' called from other type: " and the type of arg
//   0x41000000 "VALIDATE ERROR in method 'assign'", "ERROR in method 'assign'"
QRV_API bool m_assign(cObj &obj, objref &arg);
// Entries without brackets; obj stays as it was unless all is well.
//   0x40000000 "Validate error in read of type: " and the type's name
QRV_API bool m_read(cObj &obj, objref &stream);
} // namespace cTomAttrset

// The methods of the types of the metatype "attlist" themselves.
namespace cTomAttlist {
QRV_API objref newobj(objref metatype); // a type without name and without attributes
QRV_API bool create(cObj &type);        // gives a new type its methods and an empty "attspec"
// The specifications of arg replace all of the type's; what is none is skipped. Fires `changed`.
QRV_API bool m_assign(cObj &type, objref &arg);
QRV_API bool setattr(cObj &type, objref &key, objref &value); // of "attspec"; fires `changed`
QRV_API objref getattr(objref type, objref key);              // of "attspec"
QRV_API objref iterobj(objref type);                          // of "attspec"
QRV_API bool m_write(cObj &type, objref &stream);
QRV_API bool m_read(cObj &type, objref &stream); // replaces all; fires `changed` in any case
} // namespace cTomAttlist

#pragma once
// The writer of object text: cAttrScan reads the output of cObj::writeobj and
// cAttrHash::write_hash. This header has the parts that other code uses: one object as a string,
// the layout settings, the form of strings, and the standard methods `write` of the scalar types.
//
//     {                        a container over many lines ("wc"): indented, one entry a line
//       name= "Line 1";        in a map: key, "= ", value and ";"; elsewhere only value and ","
//       limits= {lo= 0; };     a container on one line ("sc")
//       again= #cRef(/limits); an object that was written before, by its path
//     }
//
// The written text does not preserve the strings `true` and `false` (they are read as bools), line
// feeds in strings, digits of float and double beyond the sixth, infinities, and values without
// text. cat::ExactText (qrv/text/write/cexacttext.h) preserves as much as possible.
//
// Numbers written to a caller's stream use that stream's flags and locale; the library's own
// streams have the classic ones. A value that is nested deeper than the stack allows is omitted and
// the stream is set to its fail state:
//   0x40000001 "Value cannot be written, path : " and the path
//
// Depth, indent and path are process-wide.

#include "qrv/core/cobj.h"
#include "qrv/text/state/cwriteindent.h"

#include <string>

namespace cat {

// The value as a string: the plain text of a string object, the written form of any other. "" for
// null.
QRV_API std::string as_string(objref const &ref);
// The same in written form: strings quoted where necessary.
QRV_API std::string as_text(objref const &ref);

// The layout of a container: the member "wformat" if that is a string, else "". An initial 's'
// means one line, anything else many lines; 'w' puts the container's comment after the opening
// bracket. Borrowed from that member: use it before any other code runs.
QRV_API char const *wformat(cObj const &obj);

// Whether the string is a name: a letter or '_', then letters, digits and '_' (ASCII).
QRV_API bool is_ident(std::string const &text);
// True if the string can be written bare, that is, if it is a name. Otherwise inserts a backslash
// before each quote and backslash, for writing between double quotes.   O(size)
QRV_API bool escape(std::string &text);
// Removes each backslash that is not itself escaped by a backslash; returns the number of removed
// ones.   O(size)
QRV_API int unescape(std::string &text);

// Standard methods `write`; the stream is passed in a cOutHolder. False if args has no stream.
QRV_API bool write_int(cObj &obj, objref &args);
QRV_API bool write_float(cObj &obj, objref &args);  // with showpoint, and "f"
QRV_API bool write_double(cObj &obj, objref &args); // with showpoint
QRV_API bool write_bool(cObj &obj, objref &args);   // "#true" and "#false" for the two constants
QRV_API bool write_string(cObj &obj, objref &args); // bare or quoted
// For types without text: writes a comment with the object's id and reference count. Objects of
// such a type are not written inside containers.
QRV_API bool write_voiddata(cObj &obj, objref &args);

} // namespace cat

#pragma once
// The writer of object text: what cObj::writeobj and cAttrHash::write_hash produce, cAttrScan reads
// back. This header holds the parts that other code uses: one object as text, the layout settings,
// the form of strings, and the standard methods `write` of the scalar types.
//
//     {                        a container over many lines ("wc"): entries indented, one a line
//       name= "Line 1";        keys, "= ", the value and ";" in a map, only value and "," elsewhere
//       limits= {lo= 0; };     a container on one line ("sc")
//       again= #cRef(/limits); an object that was written before, by its path
//     }
//
// What does not come back: strings `true` and `false` (they are read as bools), line feeds in
// strings, digits of float and double beyond the sixth, infinities, and whatever has no text.
// cat::ExactText (qrv/text/write/cexacttext.h) mends what can be mended.
//
// Numbers written to a caller's stream take that stream's flags and locale; the library's own
// streams have the classic ones. A value that is nested deeper than the stack allows is left out
// and the stream is set to its fail state:
//   0x40000001 "Value cannot be written, path : " and the path
//
// Depth, indent and path are process-wide.

#include "qrv/core/cobj.h"
#include "qrv/text/state/cwriteindent.h"

#include <string>

namespace cat {

// The value as text: a string object's plain text, anything else as written. "" for null.
QRV_API std::string as_string(objref const &ref);
// The same in written form: strings quoted where they need it.
QRV_API std::string as_text(objref const &ref);

// The layout of a container, the member "wformat" if that is a string, else "". 's' at the start:
// one line; anything else: many lines; with 'w' the container's comment behind the opening bracket.
// Borrowed from that member: look at it before anything else runs.
QRV_API char const *wformat(cObj const &obj);

// Does the text read as a name: a letter or '_', then letters, digits and '_' (ASCII).
QRV_API bool is_ident(std::string const &text);
// True when the text can be written bare, that is, is a name. Otherwise a backslash is put before
// each quote and backslash, for writing between double quotes.   O(size)
QRV_API bool escape(std::string &text);
// Removes each backslash that isn't itself behind one; their number.   O(size)
QRV_API int unescape(std::string &text);

// Standard methods `write`; the stream comes in a cOutHolder. False when args holds no stream.
QRV_API bool write_int(cObj &obj, objref &args);
QRV_API bool write_float(cObj &obj, objref &args);  // with showpoint, and "f"
QRV_API bool write_double(cObj &obj, objref &args); // with showpoint
QRV_API bool write_bool(cObj &obj, objref &args);   // "#true" and "#false" for the two constants
QRV_API bool write_string(cObj &obj, objref &args); // bare or quoted
// For types without text: a comment with id and count. Objects of such a type aren't written as
// parts of containers.
QRV_API bool write_voiddata(cObj &obj, objref &args);

} // namespace cat

#pragma once
// Exact text: while a guard lives, the writer writes so that what it writes reads back as the same
// tree. Without a guard numbers keep six digits, the string `true` comes back as a bool, and so on
// (qrv/text/write/cwriter.h). What survives anyway is written the same with and without a guard,
// but for constants. What changes:
//   - numbers whose plain text isn't one token of that type and value: the shortest text that is,
//     with ".0" put in where no point stands, and "f" behind a float
//   - strings `true` and `false` in quotes; a line feed as a backslash and the line feed
//   - a map's entries whose key is a string that begins with '#': written, with the key in quotes
//   - constants always by name, never as a back reference
//   - a blank between two "<"
//   - a one-line container with an entry that spans lines is written over many lines
//   - paths of back references hold the exact form of keys, and the places in vectors and sets as
//     they are read
//
// What can't be written is left out, counted, and told:
//   0x40000001 "Value cannot be written, path : " and the path
// That is: infinity and NaN; cat::bad() and cat::badfind() in a container, which takes neither when
// it is read; a value without text or whose `write` fails; a key that is no key when it is read
// (without text, of a type without key hooks), and a member's that begins with '#'; a constant or
// type whose name isn't read as one; a back reference through a key that is no number, string, bool
// or constant, or into a container that isn't closed yet; a comment that is more than white space
// and comments (the value stays); an object of an attribute type that the type, as it is declared
// now, would refuse or read as another object, for example one of an older declaration; an object
// of an attribute type whose required attribute is left out; a specification whose type has no
// name. A specification whose default is left out is written as #IMPLIED.
//
// Guards nest. It acts on every written form, cat::as_text and cat::as_string included.

#include "qrv/ccomp.h"

namespace cat {

class QRV_API ExactText {
  public:
    ExactText() noexcept;
    ExactText(ExactText const &) = delete;
    ExactText &operator=(ExactText const &) = delete;
    ~ExactText();

    // What was left out since this guard began, by guards inside it too.
    unsigned int failed() const noexcept;

    // Does any guard live?
    static bool active() noexcept;

  private:
    unsigned int failed_before_;
};

} // namespace cat

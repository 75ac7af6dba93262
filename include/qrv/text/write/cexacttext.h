#pragma once
// Exact text: while a guard exists, reading the written text gives the same tree. Without a guard
// numbers have six digits, the string `true` is read as a bool, and so on
// (qrv/text/write/cwriter.h). Values that need no change are written alike with and without a
// guard, except constants. The changes:
//   - numbers whose plain text isn't one token of that type and value: the shortest text that is,
//     with ".0" inserted if it has no point, and the suffix "f" for a float
//   - strings `true` and `false` in quotes; a line feed as a backslash and the line feed
//   - a map's entries whose key is a string that begins with '#': written, with the key in quotes
//   - constants always by name, never as a back reference
//   - a blank between two "<"
//   - a one-line container with an entry that spans lines is written over many lines
//   - paths of back references have the exact form of keys, and the positions in vectors and sets
//     as the reader counts them
//
// A value that can't be written is omitted, counted, and reported:
//   0x40000001 "Value cannot be written, path : " and the path
// These are: infinity and NaN; cat::bad() and cat::badfind() in a container, which the reader does
// not accept there; a value without text or whose `write` fails; a key that the reader would not
// accept (without text, or of a type without key hooks), and a member's key that begins with '#'; a
// constant or type whose name isn't read as one; a back reference through a key that is not a
// number, string, bool or constant, or into a container that isn't closed yet; a comment that
// contains more than white space and comments (the value itself is written); an object of an
// attribute type that the type, as currently declared, would reject or read as another object, for
// example one of an older declaration; an object of an attribute type whose required attribute is
// omitted; a specification whose type has no name. A specification whose default is omitted is
// written as #IMPLIED.
//
// Guards nest. They affect every written form, including cat::as_text and cat::as_string.

#include "qrv/ccomp.h"

namespace cat {

class QRV_API ExactText {
  public:
    ExactText() noexcept;
    ExactText(ExactText const &) = delete;
    ExactText &operator=(ExactText const &) = delete;
    ~ExactText();

    // The number of values omitted since this guard began, including those in nested guards.
    unsigned int failed() const noexcept;

    // Whether any guard exists.
    static bool active() noexcept;

  private:
    unsigned int failed_before_;
};

} // namespace cat

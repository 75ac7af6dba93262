#pragma once
// Exact text: while a guard exists, reading the written text gives the same tree. Without a guard,
// numbers have six digits, the string `true` is read as a bool, and so on
// (qrv/text/write/cwriter.h). A guard changes only what would not be read as the same value, and
// how constants are written:
//   - a number whose plain text is not one token of its type and value is written as the shortest
//     text that is: with ".0" inserted if it has no point, and with the suffix "f" for a float
//   - the strings `true` and `false` are written in quotes, and a line feed as a backslash and the
//     line feed
//   - a map's entry whose key is a string that begins with '#' is written, with its key in quotes;
//     it is not omitted
//   - a constant is always written by its name, never as a back reference
//   - two adjacent "<" are separated by a blank
//   - a one-line container with an entry that spans lines is written over many lines
//   - the path of a back reference has the exact form of keys, and counts positions in vectors and
//     sets as the reader does
//
// A value that can't be written is omitted, counted, and reported:
//   0x40000001 "Value cannot be written, path : " and the path
// These values are omitted:
//   - infinity and NaN
//   - cat::bad() and cat::badfind() in a container, which the reader does not accept there
//   - a value without text, or whose `write` fails
//   - an entry with a key that the reader would not accept (without text, or of a type without key
//     hooks), and a member whose key begins with '#'
//   - a constant or type whose name is not read as one
//   - a back reference through a key that is not a number, string, bool or constant, or into a
//     container that is not closed yet
//   - an object of an attribute type that the type, as declared now, would reject or read as
//     another object, for example an object of an older declaration
//   - an object of an attribute type whose required attribute is omitted
//   - a specification whose type has no name
// Two values are written, but a part of them is omitted and reported: a value whose comment
// contains more than white space and comments is written without the comment, and a specification
// whose default is omitted is written as #IMPLIED.
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

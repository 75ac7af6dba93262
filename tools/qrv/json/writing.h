#pragma once
// Objects as a JSON text. What JSON cannot express is written like this, with a warning:
//
//   a set                    an array
//   a float                  a number, with the digits that a float has
//   #true, #false            true, false
//   any other constant       its text as a string; but #nil is null
//   an object of a type      an object of its attributes
//     that has attributes
//   an object of any other   its text as a string
//     type, and a type
//   a key that is no string  its text
//   what several places      in full at each of them
//     share
//
// An int is a number without point and exponent. A double has a point or an exponent, and the
// digits it needs to come back; but a whole one that no int can hold, up to 2^53, is written as a
// whole number: that is what it comes from and becomes again. With `integers` every whole double
// below 2^53 is written so, except the negative 0. Containers on one line stay on one.
//
// Errors: a string that isn't UTF-8, two keys of a map with the same text, and sharing that would
// make the text many times larger.

#include "qrv/core/cobj.h"
#include "tools/qrv/output/messages.h"

#include <cstddef>
#include <string>

struct cJsonForm {
    int indent = 2;       // columns for each level
    bool compact = false; // no blanks and lines at all
    bool integers = false;
    size_t longest = 0; // characters by which sharing may make the text larger
    size_t room = 0;    // characters for which memory is reserved
};

// The text without a last line feed; empty after an error. Losses are reported as warnings.
std::string json_text(objref const &value, cJsonForm const &form, cMessages &messages);

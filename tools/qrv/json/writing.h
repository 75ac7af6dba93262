#pragma once
// Writes objects as JSON. Values that JSON cannot express are written like this, with a warning:
//
//   a set                    an array
//   a float                  a number, with the digits that a float has
//   #true, #false            true, false
//   any other constant       its text as a string; but #nil is null
//   an object of a type      an object of its attributes
//     that has attributes
//   an object of any other   its text as a string
//     type, and a type
//   a non-string key         its text
//   a value that several     in full at each of them
//     places share
//
// An int is a number without point and exponent. A double has a point or an exponent, and the
// digits that it needs to be read as the same value. A whole double up to 2^53 that is too large
// for an int is an exception: it is written as a whole number, since reading JSON converts such a
// number to a double. If `integers`, every whole double below 2^53 is written in this way, except
// the negative 0. Containers on one line stay on one line.
//
// These are errors: a string that isn't UTF-8, two keys of a map with the same text, and sharing
// that would make the text many times larger.

#include "qrv/core/cobj.h"
#include "tools/qrv/output/messages.h"

#include <cstddef>
#include <string>

struct cJsonForm {
    int indent = 2;       // columns for each level
    bool compact = false; // no blanks and line ends
    bool integers = false;
    size_t longest = 0; // limit of the characters that copies of shared values add
    size_t room = 0;    // characters for which memory is reserved
};

// Returns the text without a last line feed, or "" after an error. Lost data is reported as
// warnings.
std::string json_text(objref const &value, cJsonForm const &form, cMessages &messages);

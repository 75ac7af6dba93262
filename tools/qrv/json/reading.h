#pragma once
// A JSON text as objects: object to map, array to vector, string, true and false to themselves, a
// whole number that fits to int, every other number to double, null to #nil.
//
// What the file format can't hold is an error with position and path, and all are reported: a whole
// number that is neither an int nor exactly a double, a key that occurs twice in an object, a
// character 0 in a string or key, and nesting deeper than the reader goes. Rules can ask for
// another value instead of the first two.

#include "qrv/core/cobj.h"
#include "tools/qrv/output/messages.h"

#include <string>
#include <string_view>

// A mark of UTF-8 that the text may begin with; it is passed over.
constexpr std::string_view json_mark = "\xEF\xBB\xBF";

struct cJsonRules {
    enum class cBig { error, nearest_double, string };

    cBig big = cBig::error; // what a whole number becomes that is neither an int nor a double
    bool last_wins = false; // of equal keys; the value is at the place of the first
};

// The value, laid out for writing: one entry a line, but short arrays of scalars and what is empty.
// Null if something was reported.   O(size)
objref read_json(std::string const &bytes, cJsonRules const &rules, cMessages &messages);

#pragma once
// A JSON text as objects: object to map, array to vector, string, true and false to themselves, a
// whole number that fits to int, every other number to double, null to #nil.
//
// What the file format can't hold is an error with place and path, and all are told: a whole number
// that is neither an int nor exactly a double, a key that stands twice in an object or begins with
// '#', a character 0 in a string or key, and nesting deeper than the reader goes.

#include "qrv/core/cobj.h"
#include "tools/qrv/output/messages.h"

#include <string>
#include <string_view>

// A mark of UTF-8 that the text may begin with; it is passed over.
constexpr std::string_view json_mark = "\xEF\xBB\xBF";

// The value, laid out for writing: one entry a line, but short arrays of scalars and what is empty.
// Null when something was told.   O(size)
objref read_json(std::string const &bytes, cMessages &messages);

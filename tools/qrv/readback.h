#pragma once
// What was stored, held against what was given. The library converts numbers into the type that
// stands there, and leaves out what can't be done without saying so; the tool must not.

#include "qrv/core/cobj.h"

#include <optional>
#include <string>
#include <vector>

struct cMismatch {
    enum cKind { number, type, value };
    std::string path; // from the compared values on, such as "/a/0"; empty for themselves
    std::string text;
    cKind kind; // a number was changed, a value of another type stands there, or else
};

// How the value came to where it stands.
enum class cStored {
    assigned, // the whole of it
    merged    // as by attrcopy with "-xx"
};

// The differences between a value and what was to be stored there, in order, the first of them.
// A conversion that keeps the value and all digits is none. O(size of what was given)
std::vector<cMismatch> mismatches(objref const &stored, objref const &given, cStored how);

// Equal, or, as types and what has no comparison, of one exact text.
bool same_value(objref const &a, objref const &b);

// Is it one of the values with a #name, which are the same everywhere and take no value?
bool is_constant(cObj const &value);

// The value of a bool, int, float or double; none for others.
std::optional<double> number_of(objref const &value);

// Would a number of this type take that one as it is?
bool takes(objref const &target, double number);

// The written form on one line, short enough for a message.
std::string shown(objref const &value);

// "a map", "an int", "#nil"
std::string kind_of(objref const &value);
std::string with_article(std::string const &name);

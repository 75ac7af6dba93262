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

// The value of a bool, int, float, double or intf; none for others.
std::optional<double> number_of(objref const &value);

// What an intf makes of the text of a number that is another one: it keeps 32 bits, and counts in
// eights behind a sign and a 0. None where it keeps the number, and for what it doesn't take.
std::optional<int> misread(std::string const &text);

// What an intf takes, for messages.
constexpr char const *formatted_numbers =
    "intf takes 12, 0x1F, 017 or b0101, in one word of up to 32 bits";

// Would a number of this type take that one as it is?
bool takes(objref const &target, double number);

// The written form on one line, short enough for a message.
std::string shown(objref const &value);

// "a map", "an int", "#nil"
std::string kind_of(objref const &value);
std::string with_article(std::string const &name);

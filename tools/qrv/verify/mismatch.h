#pragma once
// Compares a stored value with the given one. The library converts numbers to the type of the old
// value, and ignores without an error what it can't store. The tool must report both.

#include "qrv/core/cobj.h"

#include <optional>
#include <string>
#include <vector>

struct cMismatch {
    enum cKind { number, type, value };
    std::string path; // inside the compared values, such as "/a/0"; empty for the values themselves
    std::string text;
    cKind kind; // a changed number, a stored value of another type, or another difference
};

// How the value was stored.
enum class cStored {
    assigned, // as a whole
    merged    // by attrcopy with "-xx"
};

// The first differences between the stored and the given value, in order. A conversion that keeps
// the value and all digits is not a difference. O(size of the given value)
std::vector<cMismatch> mismatches(objref const &stored, objref const &given, cStored how);

// Are the values equal? Types, and values without a comparison, are equal if their exact texts are.
bool same_value(objref const &a, objref const &b);

// Is it one of the values with a #name? They exist once and cannot be assigned to.
bool is_constant(cObj const &value);

// The value of a bool, int, float, double or intf; empty for others.
std::optional<double> number_of(objref const &value);

// The number that an intf reads from the text of another number; empty if it reads the same number,
// or does not accept the text. They differ for more than 32 bits, and for digits after a sign and a
// 0, which an intf reads as octal.
std::optional<int> misread(std::string const &text);

// The numbers that an intf accepts, for messages.
constexpr char const *formatted_numbers =
    "intf accepts 12, 0x1F, 017 or b0101, in one word of up to 32 bits";

// Can a value of the target's type store this number unchanged?
bool accepts(objref const &target, double number);

// The written form on one line, short enough for a message.
std::string shown(objref const &value);

// "a map", "an int", "#nil"
std::string kind_of(objref const &value);
std::string with_article(std::string const &name);

#pragma once
// Which rules of a declared type a value violates, as data: for programs that report violations or
// correct the value. The library itself only refuses such a value.
//
//   for (qrv::edit::BrokenRule const &broken : qrv::edit::broken_rules(value, type))
//       if (broken.rule == qrv::edit::Rule::required) ... cat::as_string(broken.key) is missing

#include "qrv/core/ctypeobj.h"

#include <string>
#include <vector>

namespace qrv::edit {

// What a type requires.
enum class Rule : unsigned char {
    declared, // the type declares the key; type->iterobj() has the keys that may have been meant
    required, // the required key has a value that is not void
    type,     // the value, or the key's value, has the type `expected`; a key's value may be nil
    fixed,    // the value of the key is the object `expected`: #FIXED
    choice,   // the value is one of the keys of the choices: type->tmember("choices")
};

// Shares the objects and types. A type that does not count its objects must be kept alive as usual.
struct BrokenRule {
    Rule rule;
    std::string path; // from the checked value to the one that violates the rule, such as "/a/0"
    typeref type;     // the type with the rule
    objref key;       // of the attribute; null if the value as a whole violates the rule
    objref expected;  // a type or a value, see above; null for other rules
    objref actual;    // the value of the key, or the whole value; null if the key does not exist
};

// The rules of `type` that the value itself violates, one for each key, in the order of its keys.
// The value is an object of the type, or one that can be converted to it: a map for an attribute
// set, a key for a choice. For an object of the type, the result is empty if and only if
// cTomAttrset::validate() returns true. In a map, keys with a default may be missing; missing
// required keys are reported last. A null value violates Rule::type.
// RUNS USER CODE: attributes of the type and hooks of keys.   O(keys)
QRV_API std::vector<BrokenRule> broken_rules(objref const &value, cTypeObj &type);

// The same, followed by violations of objects inside the value against their own types, in tree
// order and each object once. RUNS USER CODE   O(size of the tree)
QRV_API std::vector<BrokenRule> all_broken_rules(objref const &value, cTypeObj &type);

} // namespace qrv::edit

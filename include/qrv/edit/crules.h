#pragma once
// Which rules of a declared type a value breaks, as data: for programs that report them, or that
// mend the value. The library itself only refuses such a value.
//
//   for (qrv::edit::BrokenRule const &broken : qrv::edit::broken_rules(value, type))
//       if (broken.rule == qrv::edit::Rule::required) ... cat::as_string(broken.key) is missing

#include "qrv/core/ctypeobj.h"

#include <string>
#include <vector>

namespace qrv::edit {

// What a type demands.
enum class Rule : unsigned char {
    declared, // it declares the key. The keys that may have been meant: type->iterobj()
    required, // the required key has a value that is not void
    type,     // the value, or that of the key, is of the type `expected`, or nil for a key
    fixed,    // the value of the key is the object `expected` itself: #FIXED
    choice,   // the value is one of the keys of the choices: type->tmember("choices")
};

// Shares what it refers to. Objects that do not count for their type borrow it as usual, so the
// type itself must live as long as they do.
struct BrokenRule {
    Rule rule;
    std::string path; // from the checked value to the one that breaks the rule, such as "/a/0"
    typeref type;     // that has the rule
    objref key;       // of the attribute; null if the value as a whole breaks the rule
    objref expected;  // a type or a value, see above; null for other rules
    objref actual;    // the value at the key, or the whole value; null if the key is absent
};

// The rules of `type` that the value itself breaks, one for each key, in the order of its keys. The
// value is an object of the type, or what one can be made from: a map for an attribute set, a key
// for a choice. An object of the type breaks none exactly if it is valid: cTomAttrset::validate().
// In a map, keys with a default may be missing, and the missing required ones come last. A null
// value breaks Rule::type. RUNS USER CODE: attributes of the type and hooks of keys.   O(keys)
QRV_API std::vector<BrokenRule> broken_rules(objref const &value, cTypeObj &type);

// The same, followed by what objects inside the value break of their own types, in the order of the
// tree and each object once. RUNS USER CODE.   O(size of the tree)
QRV_API std::vector<BrokenRule> all_broken_rules(objref const &value, cTypeObj &type);

} // namespace qrv::edit

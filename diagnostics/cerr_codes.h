#pragma once
// Every error of the library, listed once: its kind, its code, the prefix of its message, and the
// start of its text. A function that raises an error names its kind, prefixed with err_:
//
//   begin_error(err_object_const) << cNamed::name(method) << "' called from type: " << ...;
//   return raise_eros();
//
// cat::ErrorKind has the same kinds in the same order, and docs/errors.md shows the list to users;
// scripts/check_errors.py compares the three. The numbers in the comments of public headers come
// from here as well. Several errors may share a code: the code is a class of errors, by which the
// masks of a handler select. Errors with the code 0 are printed as lines.

#include "qrv/diagnostics/cerrkind.h"

#include <cstddef>
#include <iterator>

// The prefix of the message.
enum class cErrHead {
    none,      // nothing
    object,    // "Attr value, type '...': "
    attribute, // "Setattr in object type '...', key '...': "
    place,     // the position in the text that is being read
    path       // that position and the path of the value
};

struct cErrText {
    cat::ErrorKind kind;
    unsigned int code;
    cErrHead head;
    char const *text;
};

#define QRV_ERRORS(X)                                                                              \
    /* The registry, files */                                                                      \
    X(type_name_taken, 0x00000001, none, "Fatal: duplicate name of cTypeObj: ")                    \
    X(file_not_opened, 0x00000001, none, "Cannot open file: ")                                     \
    /* Declared types */                                                                           \
    X(attspec_entry, 0x40000000, none, "Wrong type-entry in attspec")                              \
    X(read_not_valid, 0x40000000, none, "Validate error in read of type: ")                        \
    /* Comparing and writing */                                                                    \
    X(compared_too_deep, 0x40000001, none, "Nesting is too deep in object type: ")                 \
    X(not_writable, 0x40000001, none, "Value cannot be written, path : ")                          \
    /* Attributes that an object refuses */                                                        \
    X(setattr, 0x40020000, attribute, "")                                                          \
    X(cycle, 0x40020000, attribute, " Trial to establish cRef in cycle")                           \
    X(const_keys, 0x40020000, attribute, "  Flag of const key set offended")                       \
    X(key_not_int, 0x40020000, attribute, "  Key of vector or set must be 'int'")                  \
    X(key_out_of_range, 0x40020000, attribute, "  Key is OUT OF RANGE")                            \
    X(insertion, 0x40020000, attribute, "Inserting cAttr::operator<< ")                            \
    X(attspec_type, 0x40020000, attribute, " Error in setting attribute type: ")                   \
    X(attspec_unknown, 0x40020000, attribute, " Error in setting BAD type: ")                      \
    X(attspec_attribute, 0x40020000, attribute, " Error in setting BAD attribute")                 \
    /* Attributes that a specification refuses */                                                  \
    X(required, 0x40040000, none, "REQUIRED attribute, key '")                                     \
    X(fixed_ref, 0x40040000, none, "FIXED REF attribute, key '")                                   \
    X(fixed_type, 0x40040000, none, "FIXED TYPE attribute, key '")                                 \
    X(node_type, 0x40400000, none, "cAttrNode, key: ")                                             \
    /* Assigning */                                                                                \
    X(assign_other_type, 0x41000000, none, "Method 'assign' called from other type: ")             \
    X(assign_not_valid, 0x41000000, none, "VALIDATE ERROR in method 'assign'")                     \
    X(assign_failed, 0x41000000, none, "ERROR in method 'assign'")                                 \
    X(object_const, 0x41400000, none, "Object is const. Method '")                                 \
    X(no_converter, 0x41800000, none, "Method '")                                                  \
    /* Calls by name */                                                                            \
    X(bad_prototype, 0x44000000, none, "Executable, key '")                                        \
    X(bad_call, 0x44000000, object, "Bad call of '")                                               \
    X(arg_count, 0x44000000, object, "Call of '")                                                  \
    X(bad_global_call, 0x44000000, none, "Bad call of global method '")                            \
    X(global_arg_count, 0x44000000, none, "Call of global method '")                               \
    X(not_own_member, 0x44000000, object, "Inserted executable, key '")                            \
    /* Methods of types */                                                                         \
    X(missing_method, 0x48000000, none, "Call of missed standard method '")                        \
    X(missing_less, 0x48000000, object, "Missing method 'less' in this type")                      \
    X(not_type_member, 0x50000000, none, "Executable, key '")                                      \
    X(method_prototype, 0x50000000, none, "Standard method '")                                     \
    /* Reading: cAttrScan::asrSyntax */                                                            \
    X(read_equals, 0x40000001, place, "Wrong placed '=', path : ")                                 \
    X(read_key_scalar, 0x40000001, place, "Failed to read key. Input of standard type: ")          \
    X(read_scalar, 0x40000001, place, "Failed to read value: ")                                    \
    X(read_too_deep, 0x40000001, place, "Nesting is deeper than ")                                 \
    X(read_container, 0x40000001, path, "Failed to read container, type ")                         \
    X(read_unclosed_type, 0x40000001, place, "Closing symbol is missed in type ")                  \
    X(read_key, 0x40000001, place, "Failed to read key, type: ")                                   \
    X(read_value, 0x40000001, path, "Failed to read value, type ")                                 \
    X(read_assign, 0x40000001, path, "Assign failed in read of type: ")                            \
    X(read_convert, 0x40000001, path, "Convert failed in read of type: ")                          \
    X(read_key_type, 0x40000001, place, "Key type '")                                              \
    X(read_no_key, 0x40000001, place, "Pattern 'key =' is missed ")                                \
    X(read_no_value, 0x40000001, place, "Pattern 'key =value' is missed in path: ")                \
    X(read_unclosed_map, 0x40000001, place, "Map is not closed by '}'")                            \
    X(read_unclosed_vector, 0x40000001, place, "Vector is not closed by ']'")                      \
    X(read_unclosed_set, 0x40000001, place, "Set is not closed by '>'")                            \
    X(read_too_much, 0x40000001, place, "Too much merged, path : ")                                \
    X(read_no_container, 0x40000001, place, "Input is no valid container")                         \
    X(read_no_start, 0x40000001, place, "Missing start pattern 'key =' at pattern: ")              \
    X(read_nothing, 0x40000001, place, "Text without a value")                                     \
    /* Paths with values, as text: cAttrScan::asrSyntax too */                                     \
    X(path_slash, 0x40000001, place, "ERROR in setattrp:  Bad final or duplicate ")                \
    X(path_no_key, 0x40000001, place, "ERROR in setattrp: Bad no-key entry: ")                     \
    X(path_no_operator, 0x40000001, place, "ERROR in setattrp: Operator and value missed ")        \
    X(path_no_separator, 0x40000001, place,                                                        \
      "ERROR in setattrp: Separator / or operator expected, bad entry: ")                          \
    X(path_absent, 0x40000001, place, "Call of setattrp with not existing path: ")                 \
    X(path_operator, 0x40000001, place, "Call of setattrp with operator '")                        \
    /* Reading: the other results of a scan, from cAttrScan::asrToken to asrSeparator */           \
    X(read_token, 0x40000002, place, "Unexpected token '")                                         \
    X(read_bad_ident, 0x40000002, place, "Bad input: ")                                            \
    X(read_no_delimiter, 0x40000002, path, "Missing delimiter after value: ")                      \
    X(read_word_end, 0x40000002, place, "Missing delimiter after: ")                               \
    X(read_ref_bracket, 0x40000002, path, "After #cRef delimiter '(' is missed")                   \
    X(read_ref, 0x40000003, path, "Error in #cRef(")                                               \
    X(read_ref_path, 0x40000003, path, "Bad path of #cRef(")                                       \
    X(read_constant, 0x40000004, path, "Unknown #-value (no defined const): ")                     \
    X(read_key_unknown, 0x40000005, place, "Key with unknown type='")                              \
    X(read_value_unknown, 0x40000005, path, "Value with unknown type='")                           \
    X(read_no_newobj, 0x40000006, path, "Missing object ctor 'newobj' in type: ")                  \
    X(read_no_read, 0x40000006, path, "Missing method 'read' in type: ")                           \
    X(read_bad_newobj, 0x40000006, path, "Bad call of  object ctor 'newobj' in type: ")            \
    X(read_type_name, 0x40000006, place,                                                           \
      "Type name from input is registered with another type-type!")                                \
    X(read_separator, 0x40000007, place, "Unnecessary separator: ")                                \
    X(read_text_behind, 0x40000002, place, "Text after the value: ")                               \
    X(read_exception, 0x80000000, place, "Fatal exception in attr scanner!")                       \
    /* Printed as lines, without an error value */                                                 \
    X(cannot_insert, 0x00000000, none, "Cannot insert key =")                                      \
    X(entries_unread, 0x00000000, none, "Error in reading data in type: ")                         \
    X(entries_refused, 0x00000000, none, "Value assign error in read of type: '")                  \
    X(duplicate_type, 0x00000000, none, "***Error: Bad creation of duplicate type '")              \
    X(getattrp_path, 0x00000000, none, "ERROR in call of getattrp, path '")

#define QRV_ERROR(kind, code, head, text)                                                          \
    inline constexpr cErrText err_##kind{cat::ErrorKind::kind, code, cErrHead::head, text};
QRV_ERRORS(QRV_ERROR)
#undef QRV_ERROR

// All of them; the kind is the index plus one.
inline constexpr cErrText all_errors[] = {
#define QRV_ERROR(kind, code, head, text) err_##kind,
    QRV_ERRORS(QRV_ERROR)
#undef QRV_ERROR
};

constexpr bool kinds_are_in_order() {
    for (std::size_t i = 0; i < std::size(all_errors); ++i)
        if (static_cast<std::size_t>(all_errors[i].kind) != i + 1) return false;
    return true;
}
static_assert(kinds_are_in_order(), "cat::ErrorKind has the kinds of this list, in its order");

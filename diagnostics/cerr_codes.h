#pragma once
// Every error of the library, once: its name, its code, what the message has ahead of the text, and
// how the text begins. The code that raises an error begins it by its name:
//
//   begin_error(err_object_const) << method << "' called from type: " << type;
//   return raise_eros();
//
// docs/errors.md shows the same list to users, and scripts/check_errors.py compares the two. The
// numbers in the comments of public headers come from here as well. Several errors may share a
// code: the code says what class of error it is, which is what the masks of a handler select by.

// Ahead of the text.
enum class cErrHead {
    none,      // nothing
    object,    // "Attr value, type '...': "
    attribute, // "Setattr in object type '...', key '...': "
    place,     // the place in the text that is read
    path       // that place and the path of the value
};

struct cErrText {
    unsigned int code;
    cErrHead head;
    char const *text;
};

#define QRV_ERRORS(X)                                                                              \
    /* The registry, files */                                                                      \
    X(err_type_name_taken, 0x00000001, none, "Fatal: duplicate name of cTypeObj: ")                \
    X(err_file_not_opened, 0x00000001, none, "Cannot open file: ")                                 \
    /* Declared types */                                                                           \
    X(err_attspec_entry, 0x40000000, none, "Wrong type-entry in attspec")                          \
    X(err_read_not_valid, 0x40000000, none, "Validate error in read of type: ")                    \
    /* Comparing and writing */                                                                    \
    X(err_compared_too_deep, 0x40000001, none, "Nesting is too deep in object type: ")             \
    X(err_not_writable, 0x40000001, none, "Value cannot be written, path : ")                      \
    /* Attributes that an object refuses */                                                        \
    X(err_setattr, 0x40020000, attribute, "")                                                      \
    X(err_cycle, 0x40020000, attribute, " Trial to establish cRef in cycle")                       \
    X(err_const_keys, 0x40020000, attribute, "  Flag of const key set offended")                   \
    X(err_key_not_int, 0x40020000, attribute, "  Key of vector or set must be 'int'")              \
    X(err_key_out_of_range, 0x40020000, attribute, "  Key is OUT OF RANGE")                        \
    X(err_insertion, 0x40020000, attribute, "Inserting cAttr::operator<< ")                        \
    X(err_attspec_type, 0x40020000, attribute, " Error in setting attribute type: ")               \
    X(err_attspec_unknown, 0x40020000, attribute, " Error in setting BAD type: ")                  \
    X(err_attspec_attribute, 0x40020000, attribute, " Error in setting BAD attribute")             \
    /* Attributes that a specification refuses */                                                  \
    X(err_required, 0x40040000, none, "REQUIRED attribute, key '")                                 \
    X(err_fixed_ref, 0x40040000, none, "FIXED REF attribute, key '")                               \
    X(err_fixed_type, 0x40040000, none, "FIXED TYPE attribute, key '")                             \
    X(err_node_type, 0x40400000, none, "cAttrNode, key: ")                                         \
    /* Assigning */                                                                                \
    X(err_assign_other_type, 0x41000000, none, "Method 'assign' called from other type: ")         \
    X(err_assign_not_valid, 0x41000000, none, "VALIDATE ERROR in method 'assign'")                 \
    X(err_assign_failed, 0x41000000, none, "ERROR in method 'assign'")                             \
    X(err_object_const, 0x41400000, none, "Object is const. Method '")                             \
    X(err_no_converter, 0x41800000, none, "Method '")                                              \
    /* Calls by name */                                                                            \
    X(err_bad_prototype, 0x44000000, none, "Executable, key '")                                    \
    X(err_bad_call, 0x44000000, object, "Bad call of '")                                           \
    X(err_arg_count, 0x44000000, object, "Call of '")                                              \
    X(err_bad_global_call, 0x44000000, none, "Bad call of global method '")                        \
    X(err_global_arg_count, 0x44000000, none, "Call of global method '")                           \
    X(err_not_own_member, 0x44000000, object, "Inserted executable, key '")                        \
    /* Methods of types */                                                                         \
    X(err_missing_method, 0x48000000, none, "Call of missed standard method '")                    \
    X(err_missing_less, 0x48000000, object, "Missing method 'less' in this type")                  \
    X(err_not_type_member, 0x50000000, none, "Executable, key '")                                  \
    X(err_method_prototype, 0x50000000, none, "Standard method '")                                 \
    /* Reading: cAttrScan::asrSyntax */                                                            \
    X(err_read_equals, 0x40000001, place, "Wrong placed '=', path : ")                             \
    X(err_read_key_scalar, 0x40000001, place, "Failed to read key. Input of standard type: ")      \
    X(err_read_scalar, 0x40000001, place, "Failed to read value: ")                                \
    X(err_read_too_deep, 0x40000001, place, "Nesting is deeper than ")                             \
    X(err_read_container, 0x40000001, path, "Failed to read container, type ")                     \
    X(err_read_unclosed_type, 0x40000001, place, "Closing symbol is missed in type ")              \
    X(err_read_key, 0x40000001, place, "Failed to read key, type: ")                               \
    X(err_read_value, 0x40000001, path, "Failed to read value, type ")                             \
    X(err_read_assign, 0x40000001, path, "Assign failed in read of type: ")                        \
    X(err_read_convert, 0x40000001, path, "Convert failed in read of type: ")                      \
    X(err_read_key_type, 0x40000001, place, "Key type '")                                          \
    X(err_read_no_key, 0x40000001, place, "Pattern 'key =' is missed ")                            \
    X(err_read_no_value, 0x40000001, place, "Pattern 'key =value' is missed in path: ")            \
    X(err_read_unclosed_map, 0x40000001, place, "Map is not closed by '}'")                        \
    X(err_read_unclosed_vector, 0x40000001, place, "Vector is not closed by ']'")                  \
    X(err_read_unclosed_set, 0x40000001, place, "Set is not closed by '>'")                        \
    X(err_read_too_much, 0x40000001, place, "Too much merged, path : ")                            \
    X(err_read_no_container, 0x40000001, place, "Input is no valid container")                     \
    X(err_read_no_start, 0x40000001, place, "Missing start pattern 'key =' at pattern: ")          \
    /* Paths with values, as text: cAttrScan::asrSyntax too */                                     \
    X(err_path_slash, 0x40000001, place, "ERROR in setattrp:  Bad final or duplicate ")            \
    X(err_path_no_key, 0x40000001, place, "ERROR in setattrp: Bad no-key entry: ")                 \
    X(err_path_no_operator, 0x40000001, place, "ERROR in setattrp: Operator and value missed ")    \
    X(err_path_no_separator, 0x40000001, place,                                                    \
      "ERROR in setattrp: Separator / or operator expected, bad entry: ")                          \
    X(err_path_absent, 0x40000001, place, "Call of setattrp with not existing path: ")             \
    X(err_path_operator, 0x40000001, place, "Call of setattrp with operator '")                    \
    /* Reading: the other results of a scan, from cAttrScan::asrToken to asrSeparator */           \
    X(err_read_token, 0x40000002, place, "Unexpected token '")                                     \
    X(err_read_bad_ident, 0x40000002, place, "Bad input: ")                                        \
    X(err_read_no_delimiter, 0x40000002, path, "Missing delimiter after value: ")                  \
    X(err_read_word_end, 0x40000002, place, "Missing delimiter after: ")                           \
    X(err_read_ref_bracket, 0x40000002, path, "After #cRef delimiter '(' is missed")               \
    X(err_read_ref, 0x40000003, path, "Error in #cRef(")                                           \
    X(err_read_ref_path, 0x40000003, path, "Bad path of #cRef(")                                   \
    X(err_read_constant, 0x40000004, path, "Unknown #-value (no defined const): ")                 \
    X(err_read_key_unknown, 0x40000005, place, "Key with unknown type='")                          \
    X(err_read_value_unknown, 0x40000005, path, "Value with unknown type='")                       \
    X(err_read_no_newobj, 0x40000006, path, "Missing object ctor 'newobj' in type: ")              \
    X(err_read_no_read, 0x40000006, path, "Missing method 'read' in type: ")                       \
    X(err_read_bad_newobj, 0x40000006, path, "Bad call of  object ctor 'newobj' in type: ")        \
    X(err_read_type_name, 0x40000006, place,                                                       \
      "Type name from input is registered with another type-type!")                                \
    X(err_read_separator, 0x40000007, place, "Unnecessary separator: ")                            \
    X(err_read_exception, 0x80000000, place, "Fatal exception in attr scanner!")

#define QRV_ERROR(name, code, head, text)                                                          \
    inline constexpr cErrText name{code, cErrHead::head, text};
QRV_ERRORS(QRV_ERROR)
#undef QRV_ERROR

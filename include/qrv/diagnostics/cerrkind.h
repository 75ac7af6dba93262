#pragma once
// Errors as data: the kind of an error, and the names in its text.

#include "qrv/ccomp.h"

#include <cstdint>
#include <string>

namespace cat {
// One kind for each error of the library. Its code and the start of its text are on the page
// "Errors"; several kinds may share a code.
enum class ErrorKind : std::uint8_t {
    other, // from a program or a module
    // The registry, files
    type_name_taken,
    file_not_opened,
    // Declared types
    attspec_entry,
    read_not_valid,
    // Comparing and writing
    compared_too_deep,
    not_writable,
    // Attributes that an object refuses
    setattr,
    cycle,
    const_keys,
    key_not_int,
    key_out_of_range,
    insertion,
    attspec_type,
    attspec_unknown,
    attspec_attribute,
    // Attributes that a specification refuses
    required,
    fixed_ref,
    fixed_type,
    node_type,
    // Assigning
    assign_other_type,
    assign_not_valid,
    assign_failed,
    object_const,
    no_converter,
    // Calls by name
    bad_prototype,
    bad_call,
    arg_count,
    bad_global_call,
    global_arg_count,
    not_own_member,
    // Methods of types
    missing_method,
    missing_less,
    not_type_member,
    method_prototype,
    // Reading
    read_equals,
    read_key_scalar,
    read_scalar,
    read_too_deep,
    read_container,
    read_unclosed_type,
    read_key,
    read_value,
    read_assign,
    read_convert,
    read_key_type,
    read_no_key,
    read_no_value,
    read_unclosed_map,
    read_unclosed_vector,
    read_unclosed_set,
    read_too_much,
    read_no_container,
    read_no_start,
    read_nothing,
    // Paths with values, as text
    path_slash,
    path_no_key,
    path_no_operator,
    path_no_separator,
    path_absent,
    path_operator,
    // Reading: errors with separate codes
    read_token,
    read_bad_ident,
    read_no_delimiter,
    read_word_end,
    read_ref_bracket,
    read_ref,
    read_ref_path,
    read_constant,
    read_key_unknown,
    read_value_unknown,
    read_no_newobj,
    read_no_read,
    read_bad_newobj,
    read_type_name,
    read_separator,
    read_text_behind,
    read_exception,
    // Printed as lines, without an error value
    cannot_insert,
    entries_unread,
    entries_refused,
    duplicate_type,
    getattrp_path
};

// The names in the text of an error. A name that the text does not have is empty.
struct ErrorNames {
    std::string key;   // of the attribute, in object notation; for a path all keys, as "/a/b"
    std::string type;  // of the object or value that has the error, or the expected type
    std::string found; // the type that was found instead
    std::string name;  // anything else: a token, a constant, a method, a file, a limit
};
} // namespace cat

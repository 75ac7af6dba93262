#pragma once
// Shared parts of the writer: one object inside larger text, and the entries of a container in a
// layout.

#include "text/write/ccomposer.h"
#include "text/write/cwriter_form.h"

#include <string>

// cObj::writeobj. lone: only a node owns the object, so it isn't a constant.
bool write_object(cObj const &obj, cComposer &out, bool lone = false);
// The same without the checks that the caller has already done: the constant's name, or the wrapper
// around `write`.
bool write_form(cObj const &obj, cComposer &out, bool lone = false);
// cObj::write.
bool write_value(cObj const &obj, cComposer &out);
// The standard methods of the library.
bool write_scalar(cObj const &obj, cForm form, cComposer &out);
inline bool write_token(cObj const &obj, cComposer &out) { // one that satisfies is_token()
    return write_scalar(obj, form_of_token(obj), out);
}
bool write_container(cObj const &obj, cForm form, cComposer &out);

// "#name" of a constant; false if the object isn't one.
bool write_constant(cObj const &obj, cComposer &out);

// True if the stack doesn't allow another level; sets the stream to fail and reports the error
// once.
bool stack_ends(cComposer &out);

// Prints on the error stream that a value under the current path couldn't be written, and returns.
void report_error(cErr const &error);
// Calls report_unwritable and prints its exception like that.
void try_report_unwritable(std::string const &path);

// Whether a search in a table of members calls the hooks of a program's keys.
inline bool asks_user_code(cAttrHash const *members) noexcept {
    return members && members->has_foreign_keys();
}
// The first character of cat::wformat.
char layout_of(cObj const &obj, cComposer &out);

// The object's comment, if it has one that can be written.
void put_comment(cComposer &out, cObj const &obj);

// The entries without brackets. format: the first character of a layout. holder: the container, if
// its brackets are written; may be null. lone: the holder and the hash have one owner each. False,
// only in exact text, if an omitted value makes the holder unreadable.
bool write_entries(cAttrHash const &hash, cComposer &out, char format, cTypeObj const *type,
                   cObj const *holder, bool lone = false);

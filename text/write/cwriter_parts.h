#pragma once
// The parts of a text that the files of the writer share: one object inside a larger text, and the
// entries of a container in a layout.

#include "text/write/ccomposer.h"
#include "text/write/cwriter_form.h"

#include <string>

// cObj::writeobj. lone: only a node owns the object, so it isn't a constant.
bool write_object(cObj const &obj, cComposer &out, bool lone = false);
// The same without the tests that the caller has made already: the constant's name, or the wrapper
// around `write`.
bool write_form(cObj const &obj, cComposer &out, bool lone = false);
// cObj::write.
bool write_value(cObj const &obj, cComposer &out);
// The standard methods of the library.
bool write_scalar(cObj const &obj, cForm form, cComposer &out);
inline bool write_token(cObj const &obj, cComposer &out) { // one that is_token()
    return write_scalar(obj, form_of_token(obj), out);
}
bool write_container(cObj const &obj, cForm form, cComposer &out);

// "#name" of a constant; false if the object isn't one.
bool write_constant(cObj const &obj, cComposer &out);

// True, and the stream failed and the error told once, when the stack doesn't allow another level.
bool stack_ends(cComposer &out);

// Says on the error stream that a value under the current path couldn't be written, and goes on.
void tell_error(cErr const &error);
// report_unwritable, whose exception is told like that.
void tell_unwritable(std::string const &path);

// Does a search in a table of members call the hooks of a program's keys?
inline bool asks_user_code(cAttrHash const *members) noexcept {
    return members && members->has_foreign_keys();
}
// The first character of cat::wformat.
char layout_of(cObj const &obj, cComposer &out);

// The object's comment, if it has one that can be written.
void put_comment(cComposer &out, cObj const &obj);

// The entries without brackets. format: the first character of a layout. holder: the container, if
// its brackets stand around; may be null. False, in exact text alone, if a value was left out
// without which the holder can't be read.
// lone: the holder and the hash have one owner each.
bool write_entries(cAttrHash const &hash, cComposer &out, char format, cTypeObj const *type,
                   cObj const *holder, bool lone = false);

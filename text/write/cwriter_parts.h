#pragma once
// The parts of a text that the files of the writer share: one object inside a larger text, and the
// entries of a container in a layout.

#include "qrv/core/cobj.h"

#include <iosfwd>
#include <string>

// cObj::writeobj without the tests that the caller has made already: the constant's name, or the
// wrapper around `write`.
bool write_form(cObj const &obj, std::ostream &os);

// True, and the stream failed and the error told once, when the stack doesn't allow another level.
bool stack_ends(std::ostream &os);

void put_blanks(std::ostream &os, int count);

// Says on the error stream that a value under the current path couldn't be written, and goes on.
void tell_error(cErr const &error);
// report_unwritable, whose exception is told like that.
void tell_unwritable(std::string const &path);

// The object's comment, if it has one that can be written.
void put_comment(std::ostream &os, cObj const &obj);

// The entries without brackets. format: the first character of a layout. holder: the container, if
// its brackets stand around; may be null. False, in exact text alone, if a value was left out
// without which the holder can't be read.
bool write_entries(cAttrHash const &hash, std::ostream &os, char format, cTypeObj const *type,
                   cObj const *holder);

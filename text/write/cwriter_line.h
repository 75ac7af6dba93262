#pragma once
// The entries of a container, in a layout: what cAttrHash::write_hash and the containers' own
// `write` share.

#include "qrv/core/cobj.h"

#include <iosfwd>
#include <string>

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

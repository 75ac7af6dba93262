#pragma once
// What the reader silently ignores: unknown entries in the declaration of a type, all but the first
// value in the brackets of a choice or a number, and some digits of an intf that is too large. Also
// a default of another type than the declared one: no object with it is valid.

#include "qrv/text/read/creadreport.h"
#include "tools/qrv/rules/source.h"

#include <set>

struct cWrongDefault {
    cPlace place;
    std::string text; // of the error
};
// Of an attspec with these entries, as far as the text shows it.
std::optional<cWrongDefault> wrong_default(cSource const &source,
                                           std::vector<cSource::cEntry> const &entries);

// Reports all of it before the end, except where errors are known.   O(the text)
void tell_unheard(cSource const &source, cPlace end, std::set<cPlace> const &mistaken,
                  cat::ReadReport &report);

#pragma once
// What the reader passes over: of the declaration of a type it takes the entries that it knows and
// no others, and of what stands in the brackets of a choice or a number the first value. A text
// would lose the rest without a word, and some digits of an intf that is too large. Also a default
// of another type than the one that is asked for, with which no object is valid.

#include "qrv/text/read/creadreport.h"
#include "tools/qrv/rules/source.h"

#include <set>

struct cWrongDefault {
    cPlace place;
    std::string text; // what is told there
};
// Of an attspec with these entries, as far as the text tells.
std::optional<cWrongDefault> wrong_default(cSource const &source,
                                           std::vector<cSource::cEntry> const &entries);

// Tells all that stands before the end, but for those places where errors were told.   O(the text)
void tell_unheard(cSource const &source, cPlace end, std::set<cPlace> const &mistaken,
                  cat::ReadReport &report);

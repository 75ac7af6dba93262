#pragma once
// What stands in the declaration of a type and is passed over by the reader, which takes the
// entries that it knows and no others: a text would lose it without a word. So is a default of
// another type than the one that is asked for, with which no object is valid.

#include "qrv/text/creadreport.h"
#include "source.h"

#include <set>

struct cWrongDefault {
    cPlace place;
    std::string text; // what is told there
};
// Of the attspec that begins there, as far as the text tells.   O(its text)
std::optional<cWrongDefault> wrong_default(cSource const &source, cPlace attspec);

// Tells it, entry by entry, but for those places where errors were told.   O(the text)
void tell_unheard(cSource const &source, std::set<cPlace> const &mistaken, cat::ReadReport &report);

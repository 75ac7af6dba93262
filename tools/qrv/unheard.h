#pragma once
// What stands in the declaration of a type and is passed over by the reader, which takes the
// entries that it knows and no others: a text would lose it without a word.

#include "qrv/text/creadreport.h"
#include "source.h"

#include <set>

// Tells it, entry by entry, but for those places where errors were told.   O(the text)
void tell_unheard(cSource const &source, std::set<cPlace> const &mistaken, cat::ReadReport &report);

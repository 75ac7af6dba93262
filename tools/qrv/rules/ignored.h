#pragma once
// Reports text that the reader silently ignores: unknown entries in the declaration of a type, all
// but the first value in the brackets of a choice or a number, and some digits of an intf that is
// too large. Also reports a default of another type than the declared one: no object with it is
// valid.

#include "qrv/text/read/creadreport.h"
#include "tools/qrv/rules/source.h"

#include <set>

struct cWrongDefault {
    cPlace place;
    std::string text; // the text of the error
};
// The wrong default of an attspec with these entries, as far as the text shows it.
std::optional<cWrongDefault> wrong_default(cSource const &source,
                                           std::vector<cSource::cEntry> const &entries);

// Reports all ignored text before `end`, except where errors are known.   O(the text)
void report_ignored(cSource const &source, cPlace end, std::set<cPlace> const &mistaken,
                    cat::ReadReport &report);

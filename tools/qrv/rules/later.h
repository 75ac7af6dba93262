#pragma once
// Finds mistakes that are hidden by an earlier one. After a mistake in an entry of a map the reader
// loses synchronisation, and its errors in the next entries seem to follow from the mistake. So
// these entries are read once more without the faulty one: an error that remains is another
// mistake.

#include "tools/qrv/rules/mistakes.h"
#include "tools/qrv/rules/tokens.h"

#include <vector>

// Adds these mistakes. Errors that follow from them no longer follow from the first mistake. The
// brackets of the text must match. Reads a limited number of bytes again.
void add_later_mistakes(cTextTokens const &tokens, std::vector<cMistake> &mistakes);

#pragma once
// Mistakes that hide after another one. A mistake in an entry of a map puts the reader out of step,
// and all that it reports of the next entries seems to follow from it. So these entries are read
// once more, without the one that has the mistake: what is reported then is another mistake.

#include "tools/qrv/rules/mistakes.h"
#include "tools/qrv/rules/tokens.h"

#include <vector>

// Adds these mistakes; what follows from them no longer follows from the first one. Needs a text
// whose brackets match, and reads a limited number of bytes again.
void add_later_mistakes(cTextTokens const &tokens, std::vector<cMistake> &mistakes);

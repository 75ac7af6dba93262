#pragma once
// Adds notes in plain English to usual mistakes: what a person probably meant where the library
// found an unexpected token.

#include "tools/qrv/output/diagnostic.h"
#include "tools/qrv/output/lines.h"
#include "tools/qrv/rules/mistakes.h"

#include <string>
#include <vector>

// Adds a note to each mistake whose bytes match a known slip. Mistakes inside the bytes of another
// one's slip, such as a long comment of another language, become part of that mistake. The mistakes
// must be in the order of the file.
void add_hints(std::string const &bytes, std::vector<cMistake> &mistakes);

// After `a= ;` the reader takes the next key as the value, and reports the text after that. Moves
// such a mistake to the position of the missing value.
void place_at_missing_value(cLines const &lines, cMistake &mistake);

constexpr char const *text_after_first_value = "text after the first value is not read";

// The error about text after the first value; the text begins at `place`.
cDiagnostic text_after_value(std::string const &bytes, cPlace place);

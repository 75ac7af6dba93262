#pragma once
// A text as the scanner sees it, token by token, without a reading of its values: its comments, and
// the bytes that no value can hold.

#include "qrv/text/read/csourcemap.h"
#include "tools/qrv/rules/tokens.h"

#include <functional>
#include <iosfwd>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

struct cComment {
    std::string text; // without the white space before it and without carriage returns
    cPlace place;     // of its first character
};

// A byte from 128 on, or 0, outside of strings and comments ends what is read, and a 0 ends the
// string that contains it. Of bytes in a row only the first.
struct cStray {
    cPlace place;
    std::string text; // of the message
};

struct cSurvey {
    std::vector<cComment> comments;     // all that are closed, in order
    std::vector<cStray> strays;         // in order
    std::optional<cPlace> open_comment; // one that isn't closed; the scanner passes over it
};

cSurvey survey(std::string const &bytes);
cSurvey survey(cTextTokens const &tokens); // of their text

// The comments before the first other token, with what separates them from it: a blank, a line end
// or an empty line. The map is that of the bytes.
std::string head_of(std::string const &bytes, cat::SourceMap const &map);

// The tokens, a line each, in the scanner's dump form; with comments and blanks if all. `put` is
// given some text at a time; false ends it, and is the result.
bool dump(std::istream &is, bool all, std::function<bool(std::string_view text)> const &put);

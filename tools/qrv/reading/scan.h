#pragma once
// Scans text token by token, without reading its values, for comments and for bytes that no value
// can hold.

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
    cPlace place;     // the position of its first character
};

// A byte that ends the reading: a byte from 128 on, or 0, outside of strings and comments. A 0
// inside a string ends the string. Consecutive bytes count as one.
struct cStray {
    cPlace place;
    std::string text; // the text of the message
};

struct cTextScan {
    std::vector<cComment> comments;     // all closed comments, in order
    std::vector<cStray> strays;         // in order
    std::optional<cPlace> open_comment; // an unclosed comment, which the scanner skips
};

cTextScan scan_of(std::string const &bytes);
cTextScan scan_of(cTextTokens const &tokens); // of their text

// The comments before the first other token, with the separator after them: a blank, a line end or
// an empty line. `map` belongs to `bytes`.
std::string head_of(std::string const &bytes, cat::SourceMap const &map);

// Writes the tokens, one on each line, in the scanner's dump form; if `all`, with comments and
// blanks. `put` receives the text in pieces; if it returns false, the function ends and returns
// false.
bool dump(std::istream &is, bool all, std::function<bool(std::string_view text)> const &put);

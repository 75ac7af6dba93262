#pragma once
// The tokens of text with their positions. The text is scanned at most once.

#include "qrv/text/scan/cattrscanner.h"
#include "tools/qrv/output/messages.h"

#include <string>
#include <string_view>
#include <vector>

struct cTextToken {
    size_t offset = 0;
    unsigned size = 0;
    int code = tkEof;
    cPlace place;
};

inline cPlace place_of(cToken const &token) { return {token.line, token.column + 1}; }
inline cPlace place_of(cAttrLiteral const &token) { return {token.line, token.column + 1}; }

class cTextTokens {
  public:
    explicit cTextTokens(std::string const &bytes) : bytes_(bytes) {} // borrowed

    std::string const &bytes() const { return bytes_; }
    std::string_view text(cTextToken const &token) const {
        return std::string_view(bytes_).substr(token.offset, token.size);
    }

    // All tokens with comments, without white space and without an unclosed comment. A byte from
    // 128 on, or 0, outside of strings and comments is a token with a code of 0 or below.
    std::vector<cTextToken> const &all() const; // O(the text) at the first call

    // Adds a token of a typed value. The reader extracts the text of such a value, and reports its
    // tokens while it does so.
    void add_typed(cToken const &token);
    std::vector<cTextToken> const &typed() const { return typed_; }

  private:
    std::string const &bytes_;
    std::vector<cTextToken> typed_;
    mutable std::vector<cTextToken> all_;
    mutable bool scanned_ = false;
};

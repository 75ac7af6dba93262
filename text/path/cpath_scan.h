#pragma once
// Cuts the text of a path such as a/b/0 into keys, for getattrp and setattrp. It is the one place
// that knows what a key is.
//
// The scanner of the text format does the cutting, so keys have the lexical rules of a file: foo
// and "foo" are the same key, 0 is an index, #name a constant, comments count as nothing, and a//
// is a followed by a comment. Tokens are taken in pairs, the one that should be a key and the one
// behind it; each has code 0 and no text at the end, also where a byte from 128 on ended the text.

#include "qrv/text/read/cattrscan.h"

#include <sstream>
#include <string>

class cPathScan {
  public:
    // `report`: the scanner prints its summary at the end, if there were errors.
    cPathScan(std::string const &text, bool report);
    cPathScan(cPathScan const &) = delete;
    cPathScan &operator=(cPathScan const &) = delete;
    ~cPathScan() = default;

    // The first pair of a path, behind a leading slash; of a statement, behind any ; and , too.
    void begin_path();
    void begin_statement();
    void next();

    cAttrLiteral const &token() const noexcept { return token_; }
    cAttrLiteral const &follower() const noexcept { return follower_; }
    bool at_end() const noexcept { return token_.code == tkEof; }

    // The key that the token stands for, told to the tracer; null if it can be none.
    objref key() const; // RUNS FOREIGN CODE while the channel is on

    cAttrScan &scan() noexcept { return scan_; }

  private:
    std::istringstream in_;
    cAttrScan scan_;
    cAttrLiteral token_;
    cAttrLiteral follower_;
};

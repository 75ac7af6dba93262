#pragma once
// Splits a path such as a/b/0 into keys, for getattrp and setattrp. Only this class knows what a
// key is.
//
// It uses the scanner of the text format, so keys have the lexical rules of a file: foo and "foo"
// are the same key, 0 is an index, #name a constant, comments are ignored, and a// is a followed by
// a comment. Tokens are read in pairs: the one that should be a key and its follower. At the end
// each has code 0 and no text, also if a byte from 128 on ended the text.

#include "qrv/text/read/cattrscan.h"

#include <sstream>
#include <string>

class cPathScan {
  public:
    // `report`: the scanner finally prints its summary if there were errors.
    cPathScan(std::string const &text, bool report);
    cPathScan(cPathScan const &) = delete;
    cPathScan &operator=(cPathScan const &) = delete;
    ~cPathScan() = default;

    // The first pair of a path, after a leading slash; of a statement, also after any ; and ,
    // before it.
    void begin_path();
    void begin_statement();
    void next();

    cAttrLiteral const &token() const noexcept { return token_; }
    cAttrLiteral const &follower() const noexcept { return follower_; }
    bool at_end() const noexcept { return token_.code == tkEof; }

    // The key for the token, which is also traced; null if it cannot be a key.
    objref key() const; // RUNS USER CODE while the channel is on

    cAttrScan &scan() noexcept { return scan_; }

  private:
    std::istringstream in_;
    cAttrScan scan_;
    cAttrLiteral token_;
    cAttrLiteral follower_;
};

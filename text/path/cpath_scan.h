#pragma once
// Splits a path such as a/b/0 into keys, for getattrp and setattrp. Only this class knows what a
// key is.
//
// It uses the scanner of the text format, so keys have the lexical rules of a file: foo and "foo"
// are the same key, 0 is an index, #name a constant, comments are ignored, and a// is a followed by
// a comment. Tokens are read in pairs: the one that should be a key and its follower. At the end of
// the text each has code 0 and no text. Outside quotes, a byte of 128 or above also ends the text.

#include "qrv/text/read/cattrscan.h"

#include <sstream>
#include <string>

class cPathScan {
  public:
    // With `report`, the scanner prints its summary in its destructor if there were errors.
    cPathScan(std::string const &text, bool report);
    cPathScan(cPathScan const &) = delete;
    cPathScan &operator=(cPathScan const &) = delete;
    ~cPathScan() = default;

    // Reads the first pair of a path, after a leading slash.
    void begin_path();
    // Reads the first pair of a statement, after any ; and , and after a leading slash.
    void begin_statement();
    // Reads the next pair.
    void next();

    cAttrLiteral const &token() const noexcept { return token_; }
    cAttrLiteral const &follower() const noexcept { return follower_; }
    bool at_end() const noexcept { return token_.code == tkEof; }

    // The key for the token; null if it cannot be a key. If trace_lex is on, also traces the key,
    // which RUNS USER CODE.
    objref key() const;

    cAttrScan &scan() noexcept { return scan_; }

  private:
    std::istringstream in_;
    cAttrScan scan_;
    cAttrLiteral token_;
    cAttrLiteral follower_;
};

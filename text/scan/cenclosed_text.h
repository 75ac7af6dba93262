#pragma once
// The text between two brackets, as the reader cuts it out for a value of a type: up to the closing
// bracket, where strings and comments are tokens, and without comments.

#include "qrv/text/scan/cattrscanner.h"

#include <string>
#include <string_view>
#include <vector>

// Is shown the tokens as they are read, comments too, and the size of the text before each.
class cTokenWatch {
  public:
    virtual void token(cToken const &token, std::size_t size) = 0;

  protected:
    ~cTokenWatch() = default;
};

struct cEnclosedText {
    cEnclosedText() = default;
    cEnclosedText(cEnclosedText const &) = delete;
    cEnclosedText &operator=(cEnclosedText const &) = delete;

    // Of the input itself if that is in memory and no comment was left out, else of `copy`. Without
    // the brackets; up to the end of input if there was no closing one.
    std::string_view text;
    std::string copy;
    // Where the tokens of the text come from, the one that ends it included; only if wanted.
    bool with_places = false;
    std::vector<cAttrPlace> places;
    cTokenWatch *watch = nullptr; // borrowed
};

#pragma once
// The text between two brackets, which the reader extracts for a value of a type: up to the closing
// bracket, with strings and comments recognised as tokens, and without the comments.

#include "qrv/text/scan/cattrscanner.h"

#include <string>
#include <string_view>
#include <vector>

// Receives the tokens as they are read, also comments, and the size of the text before each.
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

    // A part of the input itself if that is in memory and no comment was omitted, else of `copy`.
    // Without the brackets; up to the end of input if the closing bracket is missing.
    std::string_view text;
    std::string copy;
    // The origins of the tokens in the text, including the one that ends it; only if requested.
    bool with_places = false;
    std::vector<cAttrPlace> places;
    cTokenWatch *watch = nullptr; // borrowed
};

#pragma once
// The text between two brackets, which the reader extracts for a value of a type: up to the closing
// bracket, with strings and comments recognised as tokens, and without the comments.

#include "qrv/text/scan/cattrscanner.h"

#include <string>
#include <string_view>
#include <vector>

// Receives each token when it is read, comments included, and the size of the text before it.
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

    // The text without the brackets. If the closing bracket is missing, it extends to the end of
    // the input. This is a view of the input, if that is in memory and no comment was omitted; else
    // it is a view of `copy`.
    std::string_view text;
    std::string copy;
    // Where the tokens of the text were in the input, including the token that ends it. They are
    // recorded only if with_places is set.
    bool with_places = false;
    std::vector<cAttrPlace> places;
    cTokenWatch *watch = nullptr; // borrowed
};

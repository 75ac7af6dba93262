#pragma once
// The positions of the tokens of a JSON text. The parser reports one token after the other, but not
// their positions, so this class walks over the same bytes. Between two reported tokens are only
// blanks, commas and colons.

#include "tools/qrv/output/messages.h"

#include <cstddef>
#include <string>
#include <string_view>

class cJsonPlaces {
  public:
    explicit cJsonPlaces(std::string const &bytes);
    cJsonPlaces(std::string const &bytes, size_t offset); // after the token that ends there

    void next();                            // to the next token that is reported
    size_t start() const { return start_; } // of that token
    size_t end() const { return end_; }     // after it
    // The start of the token at this offset, reported or not, which must be after the last reported
    // one. At the end of the text the end.
    size_t token_at(size_t offset) const;
    size_t end_of(size_t start) const; // of the token that begins there
    cPlace place(size_t offset);       // O(distance) while offsets grow
    // Has the array whose bracket was reported last an entry that is a container or has a line end?
    bool array_has_lines() const;

  private:
    size_t start_behind(size_t at, char const *passed) const;
    size_t behind_string(size_t at) const;
    bool string_has_lines(size_t start, size_t end) const;
    size_t behind_number(size_t at) const;
    size_t behind_digits(size_t at) const;
    bool has(size_t at, std::string_view characters) const;

    std::string const &bytes_;
    size_t start_ = 0;
    size_t end_ = 0;         // after the token
    size_t told_ = 0;        // the last offset that was asked for
    cPlace told_place_ = {}; // and its place
};

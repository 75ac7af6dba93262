#pragma once
// The positions of the tokens of JSON text. The parser reports one token after the other without
// their positions, so this class walks over the same bytes. Between two reported tokens are only
// blanks, commas and colons.

#include "tools/qrv/output/messages.h"

#include <cstddef>
#include <string>
#include <string_view>

class cJsonPlaces {
  public:
    explicit cJsonPlaces(std::string const &bytes);
    cJsonPlaces(std::string const &bytes,
                size_t offset); // starts after the token that ends at offset

    void next();                            // to the next reported token
    size_t start() const { return start_; } // of the current token
    size_t end() const { return end_; }     // after the current token
    // The start of the token at this offset, reported or not, which must be after the last reported
    // one. Returns the end of the text if it does not exist.
    size_t token_at(size_t offset) const;
    size_t end_of(size_t start) const; // the end of the token that begins at `start`
    cPlace place(size_t offset);       // O(distance) while offsets grow
    // Does the array whose bracket was reported last have an entry that is a container or has a
    // line end?
    bool array_has_lines() const;

  private:
    size_t start_after(size_t at, char const *passed) const;
    size_t after_string(size_t at) const;
    bool string_has_lines(size_t start, size_t end) const;
    size_t after_number(size_t at) const;
    size_t after_digits(size_t at) const;
    bool has(size_t at, std::string_view characters) const;

    std::string const &bytes_;
    size_t start_ = 0;
    size_t end_ = 0;         // after the token
    size_t last_offset_ = 0; // the last offset given to place()
    cPlace last_place_ = {}; // and its position
};

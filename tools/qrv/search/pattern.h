#pragma once
// A pattern with wildcards that must match a whole string, and notes on patterns that match no
// string.

#include "tools/qrv/output/messages.h"

#include <string>

class cPattern {
  public:
    // If `first`, the first alternative that matches is used, not the longest.
    cPattern(std::string text, bool first) : text_(std::move(text)), first_(first) {}

    // Does cMatch match the whole string? cMatch never matches an empty string, so here the empty
    // pattern, and only that, matches the empty string.
    bool matches(std::string const &text) const;

    // If the pattern can't match any string as a whole, adds the reason and what to write instead.
    void report_hopeless(cMessages &messages) const;

  private:
    std::string text_;
    bool first_;
};

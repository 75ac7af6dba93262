#pragma once
// A pattern with wildcards that texts match as a whole, and what can be said of one that no text
// matches so.

#include "tools/qrv/output/messages.h"

#include <string>

class cPattern {
  public:
    // `first`: the first choice that works counts, not the longest.
    cPattern(std::string text, bool first) : text_(std::move(text)), first_(first) {}

    // Does cMatch take all of the text? It takes nothing of an empty one whatever the pattern: that
    // is matched by the empty pattern alone, and this by no other text.
    bool matches(std::string const &text) const;

    // Where the pattern is such that no text matches as a whole: why, and what to write.
    void tell_hopeless(cMessages &messages) const;

  private:
    std::string text_;
    bool first_;
};

#pragma once
// Generated text with everything that is difficult to read: repeated keys, merges, references to
// all kinds of paths, typed values, sets, declarations, comments everywhere, and mistakes.

#include "tests/reference/random.h"

#include <string>
#include <vector>

namespace reference {

class cTexts {
  public:
    explicit cTexts(cRandom &random);

    // Complete text: one or a few values, possibly with mistakes.
    std::string text();
    // The entries of a map, without brackets.
    std::string entries(int depth);
    std::string value(int depth);
    std::string number();
    std::string string();
    // The same text with a few changes anywhere.
    std::string mutated(std::string text);

  private:
    std::string dense(int depth);
    std::string dense_value(int depth);
    std::string space(); // mostly empty
    std::string comment();
    std::string separator(char const *usual);
    std::string key();
    std::string key_as_text(std::string const &plain);
    std::string reference();
    std::string typed(int depth);
    std::string declaration();
    std::string specification(int depth);
    std::string map(int depth);
    std::string list(int depth, bool set);

    cRandom &random_;
    bool wrong_;    // generate mistakes
    bool comments_; // generate comments
    int left_;      // the number of entries still to generate
    std::vector<std::string> path_;
    std::vector<std::string> paths_; // of all entries so far
    std::vector<std::string> declared_;
};

} // namespace reference

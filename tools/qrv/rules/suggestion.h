#pragma once
// "did you mean": finds the known name that is closest to an unknown one, if it is close enough.
// Among equally close names, prefers the same first letters and the same length: 'of' means off,
// not on.

#include <compare>
#include <cstddef>
#include <string>
#include <string_view>

// "; did you mean 'best'?", or "" if `best` is empty.
std::string did_you_mean(std::string const &best);

// Finds the best of the names that are added. All searches of a process together take at most a
// fixed number of steps: in a file with very many unknown names the last ones get no suggestion.
class cSuggestion {
  public:
    explicit cSuggestion(std::string_view unknown);

    // False if no other name can be better.
    bool wants_more() const { return limit_ > 0 && (best_.empty() || rank_ > cRank()); }
    void show(std::string_view known);
    std::string const &best() const { return best_; } // empty if no name is close
    std::string text() const;                         // did_you_mean(best())

  private:
    std::string unknown_;
    struct cRank { // a smaller one is better
        size_t distance = 0, other_letters = 0, other_length = 0;
        auto operator<=>(cRank const &) const = default;
    };

    size_t limit_; // this distance and greater ones are too large
    cRank rank_;   // the rank of best_
    std::string best_;
};

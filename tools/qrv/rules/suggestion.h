#pragma once
// "did you mean": the known name that is closest to an unknown one, if it is close. Of several that
// are equally close, the one with the same first letters and the same length: 'of' means off, not
// on.

#include <compare>
#include <cstddef>
#include <string>
#include <string_view>

// "; did you mean 'best'?", or nothing if it is empty.
std::string did_you_mean(std::string const &best);

// Finds the best of the names that it is shown. All searches together cost no more than a fixed
// number of steps: in a file with very many unknown names the last ones get no suggestion.
class cSuggestion {
  public:
    explicit cSuggestion(std::string_view unknown);

    // False if no name can be better than the best.
    bool wants_more() const { return limit_ > 0 && (best_.empty() || rank_ > cRank()); }
    void show(std::string_view known);
    std::string const &best() const { return best_; } // empty if none is close
    std::string text() const;                         // did_you_mean() the best

  private:
    std::string unknown_;
    struct cRank { // less is better
        size_t distance = 0, other_letters = 0, other_length = 0;
        auto operator<=>(cRank const &) const = default;
    };

    size_t limit_; // distances from here on are too large
    cRank rank_;   // of the best
    std::string best_;
};

#pragma once
// "did you mean": the known name that is closest to an unknown one, if it is close.

#include <cstddef>
#include <string>
#include <string_view>

// Finds the best of the names that it is shown. All searches together cost no more than a fixed
// number of steps: with files of many unknown and many known names the last ones find nothing.
class cSuggestion {
  public:
    explicit cSuggestion(std::string_view unknown);

    bool wants_more() const { return limit_ > 0; } // else there is none, or no closer one
    void show(std::string_view known);
    std::string const &best() const { return best_; } // empty if none is close
    std::string text() const;                         // "; did you mean 'best'?" or nothing

  private:
    std::string unknown_;
    size_t limit_; // a closer one is looked for
    std::string best_;
};

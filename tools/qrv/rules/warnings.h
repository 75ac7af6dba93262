#pragma once
// Warnings about text that is read without an error but may not be meant.

#include "tools/qrv/output/messages.h"
#include "tools/qrv/output/report.h"
#include "tools/qrv/rules/doubtful.h"

#include <array>
#include <string>
#include <vector>

constexpr size_t warning_count = 10;

char const *name_of(cWarning which);
std::vector<cReport::cRule> warning_rules();

// The enabled warnings, and those of them that are errors.
class cWarningLevels {
  public:
    enum cLevel : unsigned char { off, warning, error };

    // Applies an argument of -W: NAME, no-NAME, error or error=NAME. If it is wrong, changes
    // nothing and returns the reason; else "".
    std::string set(std::string const &form);
    cLevel of(cWarning which) const;

  private:
    struct cState {
        bool is_on = true;
        bool is_error = false;
    };
    std::array<cState, warning_count> states_ = {
        cState(), cState(), cState(), cState(), cState(),
        cState(), cState(), cState(), cState(), cState{.is_on = false}};
    bool all_errors_ = false;
};

// Adds warnings about the text to the messages, in file order. The map must have recorded its
// reading, and the messages must have its errors: text with an error gets no warning.
//   O(the text), and a search among the errors for each warning
void add_warnings(std::string const &bytes, cat::SourceMap const &map, cWarningLevels const &levels,
                  cMessages &messages);

// Adds an error for each lost value of a repeated key, and for each \ of an unknown escape: both
// disappear when the value is written anew.
void add_lost_by_writing(std::string const &bytes, cat::SourceMap const &map, cMessages &messages);

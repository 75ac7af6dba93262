#pragma once
// Warnings about what is read without an error and yet may not be meant.

#include "tools/qrv/output/messages.h"
#include "tools/qrv/output/report.h"
#include "tools/qrv/rules/doubtful.h"

#include <array>
#include <string>
#include <vector>

constexpr size_t warning_count = 10;

char const *name_of(cWarning which);
std::vector<cReport::cRule> warning_rules();

// Which warnings there are, and which of them are errors.
class cWarningLevels {
  public:
    enum cLevel : unsigned char { off, warning, error };

    // Accepts the argument of -W: NAME, no-NAME, error or error=NAME. Returns what is wrong with
    // it, and then changes nothing; empty if it is right.
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

// Adds the warnings about a text to the messages, in file order. The map has recorded its reading,
// whose errors are in the messages: what has an error already gets no warning.
//   O(the text), and a search among the errors for each warning
void add_warnings(std::string const &bytes, cat::SourceMap const &map, cWarningLevels const &levels,
                  cMessages &messages);

// Adds an error for each value of a repeated key, and for each \ of an unknown escape: both
// disappear from the text when the value is written anew.
void add_lost_by_writing(std::string const &bytes, cat::SourceMap const &map, cMessages &messages);

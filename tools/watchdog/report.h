#pragma once
// Prints messages of the watchdog: lines on standard error that begin with "qrv-watchdog: ".
//
// A reader that is slow, or does not read, must not stop the watchdog. A line that can't be
// written within a moment is dropped, and so are the following ones while there is no room.

#include "tools/system.h"

#include <stdexcept>
#include <string>

namespace watchdog {

void report(std::string const &line); // control characters are shown as ?; cut at 1,000 bytes

// The watchdog itself can't continue.
class cFailure : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

} // namespace watchdog

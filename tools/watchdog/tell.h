#pragma once
// What the watch dog says: lines on standard error, each with "qrv-watchdog: " before it.
//
// A reader that does not read, or slowly, must not stop a watch dog, which has a program to look
// after: a line that can't be written within a moment is dropped, and so are those behind it that
// find no room.

#include "tools/system.h"

#include <stdexcept>
#include <string>

namespace watchdog {

void tell(std::string const &line); // control characters are shown as ?; cut at 1,000 bytes

// The watch dog itself can't go on.
class cFailure : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

} // namespace watchdog

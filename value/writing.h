#pragma once
// Values as text, with failures as exceptions.

#include "qrv/value/text.h"

#include <string>

namespace qrv::detail {

// As dump(). The message of an error begins with `about`: the name of a file and ": ", or empty.
std::string written(value const &v, style const &how, std::string const &about);

} // namespace qrv::detail

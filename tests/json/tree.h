#pragma once
// Converts JSON to objects and writes these by the library's writer. The output of from-json, which
// builds no tree, must be the same.

#include "tools/qrv/json/reading.h"

#include <optional>
#include <string>

namespace json_test {

// Nothing if the string is not JSON or cannot be converted by these rules.
std::optional<std::string> text_of_tree(std::string const &json, cJsonRules const &rules);

} // namespace json_test

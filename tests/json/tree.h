#pragma once
// JSON as objects, written by the library's writer: the output of from-json when it built trees.
// The tests compare the present output with it.

#include "tools/qrv/json/reading.h"

#include <optional>
#include <string>

namespace json_test {

// Nothing if the string is not JSON or cannot be converted by these rules.
std::optional<std::string> text_of_tree(std::string const &json, cJsonRules const &rules);

} // namespace json_test

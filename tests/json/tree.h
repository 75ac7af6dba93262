#pragma once
// A JSON text as objects, written by the library's writer: what from-json printed when it built
// trees. What it prints now is compared with that.

#include "tools/qrv/json/reading.h"

#include <optional>
#include <string>

namespace json_test {

// Nothing for a text that is not JSON, or that cannot be converted by these rules.
std::optional<std::string> text_of_tree(std::string const &json, cJsonRules const &rules);

} // namespace json_test

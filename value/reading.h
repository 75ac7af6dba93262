#pragma once
// Text as values, with all errors as data.

#include "qrv/value/text.h"

#include <string>
#include <string_view>
#include <vector>

namespace qrv::detail {

// As parse() and load(). `file` is the name of the text in errors, or empty. Registers the types
// that the text declares, also if it has errors.
value read_value(std::string_view text, std::string const &file, options const &how,
                 std::vector<cat::ReadError> &errors);
// The same, but faulty text registers nothing.
value read_all_or_no_types(std::string_view text, std::string const &file, options const &how,
                           std::vector<cat::ReadError> &errors);

// Throws parse_error if there are errors.
void throw_errors(std::vector<cat::ReadError> const &errors);

} // namespace qrv::detail

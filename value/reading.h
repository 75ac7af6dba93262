#pragma once
// Text as values, with all errors as data.

#include "qrv/value/text.h"

#include <string>
#include <string_view>
#include <vector>

namespace qrv::detail {

// As parse() and load(). `file` is the name of the text in errors, or empty. Types that the text
// declares are registered, in any case.
value read_value(std::string_view text, std::string const &file, options const &how,
                 std::vector<cat::ReadError> &errors);
// The same, but faulty text declares nothing.
value read_all_or_no_types(std::string_view text, std::string const &file, options const &how,
                           std::vector<cat::ReadError> &errors);

// parse_error, unless there are none.
void throw_errors(std::vector<cat::ReadError> const &errors);

} // namespace qrv::detail

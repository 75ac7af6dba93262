#pragma once
// A written value on one line.

#include <string>
#include <string_view>

namespace qrv::detail {

// Text of the writer without its comments and line ends. A string with a line feed keeps it: the
// format has no other form for that.   O(size)
std::string on_one_line(std::string_view text);

} // namespace qrv::detail

#pragma once
// Extended attributes and access control lists, which the system shows as attributes.

#include <string>

namespace cat {

// Gives the open file `to`, which nobody else can open yet, the attributes of the file `from`. An
// access list that `to` has from its folder and `from` lacks is removed: it would let others in.
// False, with errno, if one cannot be copied or removed. True where there are no attributes.
bool copy_attributes(std::string const &from, int to);

} // namespace cat

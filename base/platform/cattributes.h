#pragma once
// Extended attributes and access control lists, which the system represents as attributes.

#include <string>

namespace cat {

// Copies the attributes of the file `from` to the open file `to`, which nobody else can open yet.
// Removes an access list that `to` inherited from its folder and `from` lacks, since it would let
// others in. False, with errno, if an attribute cannot be copied or removed. True if the file
// system has no attributes.
bool copy_attributes(std::string const &from, int to);

} // namespace cat
